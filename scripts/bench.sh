#!/usr/bin/env bash
# Builds the release preset's benchmarks, runs them all, and writes docs/benchmarks.md and
# its plot anew. Keep the machine quiet meanwhile: the report states the load it found.
#   REPETITIONS=3 scripts/bench.sh    a quicker, noisier run
#   REPORT_ONLY=1 scripts/bench.sh    writes the report from the last run's figures
set -euo pipefail
. "$(dirname "$0")/prepare.sh"

out=build/bench
programs=build/release/bench
if [ -z "${REPORT_ONLY:-}" ]; then
  cmake --preset release
  cmake --build --preset release --target benchmarks
  mkdir -p "$out"
  for scenario in table request codec sort cell sql strutil pool pool_threads bus http; do
    echo "running $scenario"
    "$programs/${scenario%_threads}/bench_$scenario" --benchmark_min_time=0.2 \
      --benchmark_repetitions="${REPETITIONS:-9}" --benchmark_enable_random_interleaving=true \
      --benchmark_out="$out/$scenario.json" --benchmark_out_format=json >/dev/null
  done
  echo "running kelpd"
  cmake --build --preset release --target kelpd
  /usr/bin/python3 bench/kelpd/kelpd_bench.py build/release/apps/kelpd/kelpd "$out/kelpd.json" \
    "${REPETITIONS:-9}"
  /usr/bin/python3 bench/bus/syscalls.py "$programs/bus/bench_bus" "$out/syscalls.json"
fi
/usr/bin/python3 bench/report.py "$out" docs

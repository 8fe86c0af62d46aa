#!/usr/bin/env bash
# One command's whole way between real processes: kelpctl asks nemgr over the message bus,
# nemgr asks Debian's snmpd over SNMP. Installs and builds what is missing first. Exit
# status 0 only if every answer was the expected one.
set -euo pipefail
. "$(dirname "$0")/prepare.sh"

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }

say "Building nemgr and kelpctl (the first time takes a few minutes)"
cmake --preset dev >/dev/null
cmake --build --preset dev --target nemgr kelpctl | tail -n 1
kelpctl=$PWD/build/dev/apps/kelpctl/kelpctl
nemgr=$PWD/build/dev/examples/nemgr/nemgr

work=$(mktemp -d)
snmpd_pid='' nemgr_pid='' failures=0
clean_up() {
  for pid in $nemgr_pid $snmpd_pid; do
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap clean_up EXIT
mkdir -m 700 "$work/run" "$work/state"
export LC_ALL=C.UTF-8 KELP_RUN_DIR=$work/run KELPCTL_COMMANDS=$PWD/examples/nemgr/commands.json

# eventually WHAT COMMAND...: repeats COMMAND until it succeeds, for ten seconds at most.
eventually() {
  local what=$1 deadline=$((SECONDS + 10))
  shift
  until "$@"; do
    if [ $SECONDS -ge $deadline ]; then
      echo "demo: $what" >&2
      exit 1
    fi
    sleep 0.05
  done
}

# A network element on a free port of the loopback, with a configuration of its own.
element_runs() { grep -q 'NET-SNMP version' "$work/snmpd.log" 2>/dev/null; }
element_runs_or_ended() { element_runs || ! kill -0 "$snmpd_pid" 2>/dev/null; }
start_element() {
  for _ in 1 2 3 4 5; do
    port=$((20000 + RANDOM % 40000))
    printf '%s\n' "agentaddress udp:127.0.0.1:$port" \
      'rwcommunity private 127.0.0.1' 'rocommunity public 127.0.0.1' >"$work/snmpd.conf"
    rm -f "$work/snmpd.log"
    MIBS='' SNMP_PERSISTENT_DIR=$work/state \
      /usr/sbin/snmpd -f -C -c "$work/snmpd.conf" -Lf "$work/snmpd.log" &
    snmpd_pid=$!
    eventually "snmpd does not start" element_runs_or_ended
    if element_runs; then return 0; fi
    wait "$snmpd_pid" || snmpd_pid=''  # the port was taken
  done
  echo "demo: no free port for snmpd: $(cat "$work/snmpd.log")" >&2
  exit 1
}

# call STATUS PATTERN ARGUMENT...: runs kelpctl call, shows what it does, and notes a
# failure unless it exits with STATUS and prints something that matches PATTERN.
call() {
  local expected=$1 pattern=$2 status=0
  shift 2
  printf '\n$ kelpctl call'
  printf ' %q' "$@"
  echo
  timeout 60 "$kelpctl" call "$@" --verbose >"$work/out" 2>&1 || status=$?
  sed 's/^/  /' "$work/out"
  if [ $status != "$expected" ] || ! grep -qE -- "$pattern" "$work/out"; then
    echo "  UNEXPECTED: exit status $status, expected $expected and '$pattern'"
    failures=$((failures + 1))
  elif [ $status != 0 ]; then
    echo "  exit status $status, as expected"
  fi
}

say "1. A network element: snmpd"
start_element
echo "snmpd (pid $snmpd_pid) listens on 127.0.0.1:$port"

say "2. A server on the message bus: nemgr"
"$nemgr" --element "127.0.0.1:$port" --snmp-timeout-ms 500 >"$work/nemgr.out" 2>"$work/nemgr.log" &
nemgr_pid=$!
eventually "nemgr does not start: see $work/nemgr.log" grep -q '^nemgr: ready$' "$work/nemgr.out"
echo "nemgr (pid $nemgr_pid) serves on $(ls "$KELP_RUN_DIR"/*.sock)"
"$kelpctl" list | grep -E '^( {2})?[^ ]'

say "3. Reading: one row, and a table with integers, doubles and octets"
call 0 "^sysName +$(uname -n)\$" nemgr readSystem
call 0 '^lo .* 65536 ' nemgr readInterfaces

say "4. Writing: the element takes it, or refuses it"
call 0 '^sysLocation +東京, 2F$' nemgr writeSystem contact='Zoë Ångström' location='東京, 2F'
call 12 'the element refuses: .*noAccess' nemgr writeSystem contact=Nobody community=public

say "5. An element that does not exist"
call 11 'the element does not answer: 127.0.0.1:9:' nemgr readSystem element=127.0.0.1:9

say "6. Reading again: the rates since the reading before"
call 0 '^lo +[0-9]+ +[0-9.]+ +1 +65536' nemgr readInterfaces

say "7. The large answer: the IEEE registry"
rows=$(/usr/bin/python3 -c '
import csv, sys
print(sum(len(list(csv.reader(open(f, encoding="utf-8", newline="")))) - 1 for f in sys.argv[1:]))
' /usr/share/ieee-data/{oui,mam,oui36,iab}.csv)
call 0 "^\.\.\. 5 of $rows rows\$" nemgr findVendors --rows 5
call 0 '^4C917A8 +MA-M +Camsat Przemysław Gralak ' nemgr findVendors name=camsat
call 14 "no such vendor: 'fffff'" nemgr findVendors prefix=fffff

say "8. The same for programs"
call 0 '^\{"retCode":0,"tables":\[$' nemgr findVendors prefix=00:00:0c --json

say "9. A server that is not running"
kill "$nemgr_pid"
wait "$nemgr_pid" || failures=$((failures + 1))
nemgr_pid=''
call 3 'nemgr \(3001\) is not running' nemgr readSystem

if [ $failures != 0 ]; then
  say "$failures of the answers were not the expected ones"
  exit 1
fi
say "All answers were the expected ones."

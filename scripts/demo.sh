#!/usr/bin/env bash
# One command's whole way between real processes: on an installation that kelpd makes and
# serves, kelpctl asks nemgr over the message bus, nemgr asks Debian's snmpd over SNMP and
# keeps what it heard in a database. Installs and builds what is missing first. Exit status 0
# only if every answer was the expected one.
#   scripts/demo.sh                the inventory is kept in an SQLite file
#   scripts/demo.sh --postgresql   on a PostgreSQL server that the script starts
set -euo pipefail
database=sqlite
case "${1:-}" in
  '') ;;
  --postgresql) database=postgresql ;;
  *) echo "usage: $0 [--postgresql]" >&2; exit 2 ;;
esac
. "$(dirname "$0")/prepare.sh"

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }

say "Building nemgr, kelpd and kelpctl (the first time takes a few minutes)"
cmake --preset dev >/dev/null
cmake --build --preset dev --target nemgr kelpd kelpctl | tail -n 1
kelpctl=$PWD/build/dev/apps/kelpctl/kelpctl
kelpd=$PWD/build/dev/apps/kelpd/kelpd
nemgr=$PWD/build/dev/examples/nemgr/nemgr

work=$(mktemp -d)
declare -A pid=() port=()  # of the servers that run, by name
failures=0
clean_up() {
  for name in nemgr kelpd snmpd postgres; do
    if [ -n "${pid[$name]:-}" ]; then
      kill "${pid[$name]}" 2>/dev/null || true
      wait "${pid[$name]}" 2>/dev/null || true
    fi
  done
  rm -rf "$work"
}
trap clean_up EXIT
chmod 711 "$work"
mkdir -m 700 "$work/state"
export LC_ALL=C.UTF-8 KELPCTL_COMMANDS=$PWD/examples/nemgr/commands.json
unset KELP_RUN_DIR KELP_LOG_FILE KELP_LOG_FORMAT

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

# on_a_free_port NAME: calls start_NAME, which begins a server in the background on the port
# port[NAME] of the loopback, until one is not taken; NAME_runs tells.
runs_or_ended() { "$1_runs" || ! kill -0 "${pid[$1]}" 2>/dev/null; }
on_a_free_port() {
  local name=$1
  for _ in 1 2 3 4 5; do
    port[$name]=$((20000 + RANDOM % 40000))
    "start_$name"
    pid[$name]=$!
    eventually "$name does not start" runs_or_ended "$name"
    if "${name}_runs"; then return 0; fi
    wait "${pid[$name]}" || true
    unset "pid[$name]"
  done
  echo "demo: no free port for $name: $(cat "$work/$name.log")" >&2
  exit 1
}

# end NAME: ends a server, which must say that all is well.
end() {
  kill "${pid[$1]}"
  wait "${pid[$1]}" || failures=$((failures + 1))
  unset "pid[$1]"
}

# A network element with a configuration of its own.
snmpd_runs() { grep -q 'NET-SNMP version' "$work/snmpd.log" 2>/dev/null; }
start_snmpd() {
  printf '%s\n' "agentaddress udp:127.0.0.1:${port[snmpd]}" \
    'rwcommunity private 127.0.0.1' 'rocommunity public 127.0.0.1' >"$work/snmpd.conf"
  rm -f "$work/snmpd.log"
  MIBS='' SNMP_PERSISTENT_DIR=$work/state \
    /usr/sbin/snmpd -f -C -c "$work/snmpd.conf" -Lf "$work/snmpd.log" &
}

# The installation, and the daemon that serves it.
kelpd_runs() { grep -q '^kelpd: ready: ' "$work/kelpd.out" 2>/dev/null; }
start_kelpd() {
  rm -rf "$work/nms"
  exports=$("$kelpd" init "$work/nms" --port "${port[kelpd]}")
  eval "$exports"
  "$kelpd" run >"$work/kelpd.out" 2>"$work/kelpd.log" &
}

# A database server. Root may not run one.
postgres_bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | tail -n 1)
as_postgres=()  # what a command begins with; it becomes the command, with the same process id
if [ "$(id -u)" = 0 ]; then
  as_postgres=(setpriv --reuid=postgres --regid=postgres --init-groups)
fi
postgres_runs() { "$postgres_bin/pg_isready" -q -h 127.0.0.1 -p "${port[postgres]}"; }
start_postgres() {
  "${as_postgres[@]}" "$postgres_bin/postgres" -D "$work/postgres" -p "${port[postgres]}" -h 127.0.0.1 \
    -k "$work/postgres" >"$work/postgres.log" 2>&1 &
}
make_cluster() {
  mkdir "$work/postgres"
  echo "$postgres_password" >"$work/password"
  if [ "$(id -u)" = 0 ]; then chown postgres "$work/postgres" "$work/password"; fi
  chmod 600 "$work/password"
  "${as_postgres[@]}" "$postgres_bin/initdb" -D "$work/postgres" -U nemgr --pwfile="$work/password" \
    -A scram-sha-256 -E UTF8 --locale=C.UTF-8 >/dev/null
}

# A new installation has an SQLite database; this makes it one on the server.
use_postgres() {
  postgres_password=$(head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n')
  make_cluster
  on_a_free_port postgres
  /usr/bin/python3 - "$OSS_ROOT/etc/kelp.json" "${port[postgres]}" "$postgres_password" <<'END'
import json, sys
path, port, password = sys.argv[1:]
with open(path, "r+", encoding="utf-8") as file:
    settings = json.load(file)
    settings["databases"]["MCDB"] = {
        "type": "postgresql", "url": f"postgresql://127.0.0.1:{port}/postgres",
        "user": "nemgr", "password": password}
    file.seek(0)
    file.truncate()
    json.dump(settings, file, indent=2)
END
}

# ask PATTERN CURL-ARGUMENT...: a request to the gateway; notes a failure unless what curl
# prints matches PATTERN.
ask() {
  local pattern=$1 answer
  shift
  printf '$ curl'
  printf ' %s' "${@//"$OSS_ROOT"/\$OSS_ROOT}"
  echo
  answer=$(curl --silent --show-error --max-time 20 "$@" 2>&1) || true
  printf '%s\n' "$answer" | sed 's/^/  /'
  if ! grep -qE -- "$pattern" <<<"$answer"; then
    echo "  UNEXPECTED: expected '$pattern'"
    failures=$((failures + 1))
  fi
}

start_nemgr() {
  "$nemgr" --element "127.0.0.1:${port[snmpd]}" --snmp-timeout-ms 500 --database MCDB \
    >"$work/nemgr.out" 2>>"$work/nemgr.log" &
  pid[nemgr]=$!
  eventually "nemgr does not start: $(cat "$work/nemgr.log")" \
    grep -q '^nemgr: ready$' "$work/nemgr.out"
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
on_a_free_port snmpd
echo "snmpd (pid ${pid[snmpd]}) listens on 127.0.0.1:${port[snmpd]}"

say "2. The platform on a single node: kelpd"
on_a_free_port kelpd
printf '$ kelpd init %s\n%s\n' "$work/nms" "$exports" | sed '2,$s/^/  /'
sed "s/^/  (pid ${pid[kelpd]}) /" "$work/kelpd.out"
gateway=$(grep -oE 'https://[0-9.:]+' "$work/kelpd.out")
ask '^\{"groupmap"' "$gateway/rest/mrb/v1/getrestgroupinfo" --cacert "$OSS_ROOT/etc/ssl/ca.crt" \
  --cert "$OSS_ROOT/etc/ssl/client.crt" --key "$OSS_ROOT/etc/ssl/client.key"
echo "Without a certificate of this installation the gateway does not listen:"
ask 'certificate required' "$gateway/rest/mrb/v1/getrestgroupinfo" --cacert "$OSS_ROOT/etc/ssl/ca.crt"

say "3. A server on the message bus: nemgr, with its inventory in $database"
cp -r examples/nemgr/installed/. "$OSS_ROOT"  # its error texts and its white list
if [ $database = postgresql ]; then
  use_postgres
  echo "PostgreSQL (pid ${pid[postgres]}) listens on 127.0.0.1:${port[postgres]}"
fi
start_nemgr
echo "nemgr (pid ${pid[nemgr]}) serves on $(ls "$OSS_ROOT"/var/run/3001.*.sock); its log:"
sed 's/^/  /' "$work/nemgr.log"
call 0 '^restGroups +nemgr$' nemgr readServer
"$kelpctl" list | grep -E '^( {2})?[^ ]'

say "4. Reading: one row, and a table with integers, doubles and octets"
call 0 "^sysName +$(uname -n)\$" nemgr readSystem
call 0 '^lo .* 65536 ' nemgr readInterfaces

say "5. Writing: the element takes it, or refuses it"
call 0 '^sysLocation +東京, 2F$' nemgr writeSystem contact='Zoë Ångström' location='東京, 2F'
call 12 'the element refuses: .*noAccess' nemgr writeSystem contact=Nobody community=public

say "6. An element that does not exist"
call 11 'the element does not answer: 127.0.0.1:9:.* \(Check the address' nemgr readSystem element=127.0.0.1:9

say "7. Reading again: the rates since the reading before"
call 0 '^lo +[0-9]+ +[0-9.]+ +1 +65536' nemgr readInterfaces
call 0 '^sysLocation +東京, 2F$' nemgr readSystem

say "8. The inventory: what was read is in the database, also after a restart"
call 0 "^element +127\.0\.0\.1:${port[snmpd]}\$" nemgr listElements
end nemgr
start_nemgr
echo "nemgr was stopped and started again (pid ${pid[nemgr]})"
call 0 '^sysLocation +東京, 2F$' nemgr listElements
call 0 '^lo +1 +65536 ' nemgr listInterfaces
call 0 "^element +127\.0\.0\.1:${port[snmpd]}\$" nemgr forgetElement
call 18 'the inventory has no such element: 127.0.0.1' nemgr listInterfaces

say "9. The large answer: the IEEE registry"
rows=$(/usr/bin/python3 -c '
import csv, sys
print(sum(len(list(csv.reader(open(f, encoding="utf-8", newline="")))) - 1 for f in sys.argv[1:]))
' /usr/share/ieee-data/{oui,mam,oui36,iab}.csv)
call 0 "^\.\.\. 5 of $rows rows\$" nemgr findVendors --rows 5
call 0 '^4C917A8 +MA-M +Camsat Przemysław Gralak ' nemgr findVendors name=camsat
call 14 "no such vendor: 'fffff'" nemgr findVendors prefix=fffff

say "10. The same for programs"
call 0 '^\{"retCode":0,"tables":\[$' nemgr findVendors prefix=00:00:0c --json

say "11. A server that is not running"
end nemgr
call 3 'nemgr \(3001\) is not running' nemgr readSystem

say "12. The platform's end"
end kelpd
grep -o 'access peer=.*' "$OSS_ROOT/var/log/kelpd.log" | sed 's/^/  /'

if [ $failures != 0 ]; then
  say "$failures of the answers were not the expected ones"
  exit 1
fi
say "All answers were the expected ones."

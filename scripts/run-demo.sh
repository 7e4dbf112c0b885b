#!/usr/bin/env bash
# The main job: the sample phone GUI zedagui against the simulated core, which
# plays run/scenarios/demo.txt, and the database peer tgui-dbs on a directory
# made afresh by run/db/demo.sql. Without DISPLAY it runs headless on Qt's offscreen
# platform, writes a screenshot after each scenario step into out/screens/,
# prints each event the core receives and ends by itself; with a DISPLAY it
# opens the window and runs until it is closed. The core takes a free port and
# zedagui runs in a temporary copy of run/ that names it, so several runs (with
# their own TGUI_DEMO_OUT) may go side by side.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"

build="${TGUI_DEMO_BUILD:-$root/build/release}"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target zedagui tgui-core tgui-soapd tgui-child tgui-dbs

out="${TGUI_DEMO_OUT:-$root/out/screens}"
scenario="${TGUI_DEMO_SCENARIO:-scenarios/demo.txt}"
mkdir -p "$out"
out="$(cd "$out" && pwd)"
rm -f "$out"/*.png "$out"/ui-report.xml "$out"/core.log "$out"/zedagui.log "$out"/soapd.log "$out"/dbs.log "$out"/demo.db

# A run folder of its own, so that runs side by side do not meet: links to
# everything in run/ but Skins/default.conf, which names this run's core port.
rundir="$(mktemp -d "${TMPDIR:-/tmp}/tgui-demo.XXXXXX")"
core=""
dbs=""
soapd=""
net=""
stop_net() {
  kill "$soapd" "$(cat "$net/proxy1.pid" 2>/dev/null)" "$(cat "$net/proxy2.pid" 2>/dev/null)" 2>/dev/null || true
  cp "$net/soapd.log" "$out/soapd.log" 2>/dev/null || true
  rm -rf "$net"
}

cleanup() {
  if [ -n "$core" ]; then kill "$core" 2>/dev/null || true; fi
  if [ -n "$dbs" ]; then kill "$dbs" 2>/dev/null || true; fi
  if [ -n "$net" ]; then stop_net; fi
  rm -rf "$rundir"
}
trap cleanup EXIT
for entry in "$root/run"/*; do
  [ "$(basename "$entry")" = Skins ] || ln -s "$entry" "$rundir/"
done
mkdir "$rundir/Skins"
for entry in "$root/run/Skins"/*; do
  [ "$(basename "$entry")" = default.conf ] || ln -s "$entry" "$rundir/Skins/"
done
cd "$rundir"
# zedagui supervises this child (AutoStart in Skins/default.conf) as "./tgui-child".
ln -sfn "$build/bin/tgui-child" tgui-child

# The directory's world for the SOAP steps: tgui-soapd (TLS) and two tinyproxy
# processes in front of it, on free ports of 127.0.0.1, and the proxy script
# that names both. The scenario stops the first proxy ($TGUI_DEMO_PROXY_PID).
net="$rundir/net"; mkdir "$net"
"$build/bin/tgui-soapd" --tls --port 0 >"$net/soapd.log" 2>&1 &
soapd=$!
for _ in $(seq 50); do grep -q '^LISTENING' "$net/soapd.log" 2>/dev/null && break; sleep 0.1; done
soapd_port="$(sed -n 's/^LISTENING \([0-9]*\).*/\1/p' "$net/soapd.log" || true)"
free_port() {  # a port of 127.0.0.1 that nothing answers on
  local p
  while :; do
    p=$(( (RANDOM * 32768 + RANDOM) % 28000 + 32768 ))
    (exec 3<>"/dev/tcp/127.0.0.1/$p") 2>/dev/null || { echo "$p"; return; }
  done
}
start_proxy() {  # NAME: starts it, prints its port once it listens
  local name=$1 port
  for _ in 1 2 3; do
    port=$(free_port)
    printf 'Port %s\nListen 127.0.0.1\nAllow 127.0.0.1\nMaxClients 32\nLogLevel Info\nLogFile "%s"\nUpstream http 127.0.0.1:%s\n' \
      "$port" "$net/$name.log" "$soapd_port" >"$net/$name.conf"
    tinyproxy -d -c "$net/$name.conf" >/dev/null 2>&1 &
    echo $! >"$net/$name.pid"
    for _ in $(seq 50); do
      (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && { echo "$port"; return 0; }
      sleep 0.1
    done
    kill "$(cat "$net/$name.pid")" 2>/dev/null || true
  done
  return 1
}
proxy1_port="$(start_proxy proxy1)"
proxy2_port="$(start_proxy proxy2)"
cat >"$net/directory.pac" <<PAC
function FindProxyForURL(url, host) {
  if (dnsDomainIs(host, "directory.test"))
    return "PROXY 127.0.0.1:$proxy1_port; PROXY localhost:$proxy2_port";
  return "DIRECT";
}
PAC
export TGUI_DEMO_PROXY_PID="$(cat "$net/proxy1.pid")"
# The core listens on a free port of the loopback interface and says which.
# Its lines go to core.log; the events it receives are printed as they come.
core_fifo="$rundir/.core-output"; mkfifo "$core_fifo"
# Its "report" steps save UI reports there: the final screen's is ui-report.xml.
"$build/bin/tgui-core" --port 0 --listen 127.0.0.1 --scenario "$scenario" --report-dir "$out" >"$core_fifo" 2>&1 &
core=$!
( while IFS= read -r line; do
    printf '%s\n' "$line" >>"$out/core.log"
    case "$line" in
      EVENT*) printf 'core received: %s\n' "${line#EVENT }" ;;
      REPORT*) printf 'core: %s\n' "$line" ;;
      "SCENARIO timeout"*|REJECT*) printf 'core: %s\n' "$line" ;;
    esac
  done <"$core_fifo" ) &
reader=$!

port=""
for _ in $(seq 100); do
  port="$(sed -n 's/^LISTENING \([0-9]*\).*/\1/p' "$out/core.log" 2>/dev/null || true)"
  [ -n "$port" ] && break
  kill -0 "$core" 2>/dev/null || break
  sleep 0.1
done
if [ -z "$port" ]; then
  echo "tgui-core did not start:" >&2
  cat "$out/core.log" >&2 || true
  exit 1
fi
sed "s/^ComServerPort=.*/ComServerPort=$port/" "$root/run/Skins/default.conf" >Skins/default.conf

# The database peer registers before zedagui, which then finds "dbs" up.
"$build/bin/tgui-dbs" --port "$port" --init "$root/run/db/demo.sql" "$out/demo.db" 2>"$out/dbs.log" &
dbs=$!
for _ in $(seq 100); do grep -q '^REGISTER dbs' "$out/core.log" && break; sleep 0.1; done
if ! grep -q '^REGISTER dbs' "$out/core.log"; then
  echo "tgui-dbs did not register with the core:" >&2
  cat "$out/dbs.log" >&2 || true
  exit 1
fi

directory=(--directory-url https://directory.test/auth/soap --directory-pac "$net/directory.pac"
           --directory-user alice --directory-password secret)
status=0
if [ -z "${DISPLAY:-}" ]; then
  QT_QPA_PLATFORM=offscreen "$build/bin/zedagui" --screenshots "$out" --quit-on-end \
      --deadline 150000 "${directory[@]}" 2>"$out/zedagui.log" || status=$?
  wait "$core" || true
  wait "$reader" || true
  echo "screenshots in $out:"
  ls "$out"/*.png
  [ -s "$out/ui-report.xml" ] && echo "the final screen's UI report: $out/ui-report.xml"
  [ "$status" -eq 0 ] || echo "zedagui ended with exit code $status; see $out/zedagui.log" >&2
else
  "$build/bin/zedagui" --screenshots "$out" "${directory[@]}" 2>"$out/zedagui.log" || status=$?
fi
kill -TERM "$dbs" 2>/dev/null && wait "$dbs" || true
exit "$status"

#!/usr/bin/env bash
# The main job: the sample phone GUI zedagui against the simulated core, which
# plays run/scenarios/demo.txt, and the database peer tgui-dbs on a directory
# made afresh by run/db/demo.sql. Without DISPLAY it runs headless on Qt's offscreen
# platform, writes a screenshot after each scenario step into out/screens/,
# prints each event the core receives and ends by itself; with a DISPLAY it
# opens the window and runs until it is closed.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"

build="${TGUI_DEMO_BUILD:-$root/build/release}"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target zedagui tgui-core tgui-soapd tgui-child tgui-dbs

out="${TGUI_DEMO_OUT:-$root/out/screens}"
scenario="${TGUI_DEMO_SCENARIO:-scenarios/demo.txt}"
cd "$root/run"
# zedagui supervises this child (AutoStart in Skins/default.conf) as "./tgui-child".
ln -sfn "$build/bin/tgui-child" tgui-child
mkdir -p "$out"
rm -f "$out"/*.png "$out"/ui-report.xml "$out"/core.log "$out"/zedagui.log "$out"/soapd.log "$out"/dbs.log "$out"/demo.db

# The directory's world for the SOAP steps: tgui-soapd (TLS) and two tinyproxy
# processes in front of it, on free ports of 127.0.0.1, and the proxy script
# that names both. The scenario stops the first proxy ($TGUI_DEMO_PROXY_PID).
net="$(mktemp -d)"
"$build/bin/tgui-soapd" --tls --port 0 >"$net/soapd.log" 2>&1 &
soapd=$!
for _ in $(seq 50); do grep -q '^LISTENING' "$net/soapd.log" 2>/dev/null && break; sleep 0.1; done
soapd_port="$(sed -n 's/^LISTENING \([0-9]*\).*/\1/p' "$net/soapd.log")"
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
stop_net() {
  kill "$soapd" "$(cat "$net/proxy1.pid" 2>/dev/null)" "$(cat "$net/proxy2.pid" 2>/dev/null)" 2>/dev/null || true
  cp "$net/soapd.log" "$out/soapd.log" 2>/dev/null || true
  rm -rf "$net"
}

# The core listens on the port of run/Skins/default.conf. Its lines go to
# core.log; the events it receives are printed as they come.
core_fifo="$(mktemp -u)"; mkfifo "$core_fifo"
# Its "report" steps save UI reports there: the final screen's is ui-report.xml.
"$build/bin/tgui-core" --port 10010 --scenario "$scenario" --report-dir "$out" >"$core_fifo" 2>&1 &
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
dbs=""
trap 'kill "$core" $dbs 2>/dev/null || true; rm -f "$core_fifo"; stop_net' EXIT

# The core is up once its first line is written.
for _ in $(seq 50); do [ -s "$out/core.log" ] && break; sleep 0.1; done
if ! grep -q '^LISTENING' "$out/core.log" 2>/dev/null; then
  echo "tgui-core did not start (is port 10010 taken?):" >&2
  cat "$out/core.log" >&2 || true
  exit 1
fi

# The database peer registers before zedagui, which then finds "dbs" up.
"$build/bin/tgui-dbs" --port 10010 --init "$root/run/db/demo.sql" "$out/demo.db" 2>"$out/dbs.log" &
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
      --deadline 90000 "${directory[@]}" 2>"$out/zedagui.log" || status=$?
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

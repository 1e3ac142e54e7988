# Shared by the benchmark scripts, sourced from the repository's root after `duration` and
# `runs` are set: the tools, a scratch folder whose servers are stopped at exit, free ports,
# waiting for a URL, wrk runs measured against a server's CPU time, and the servers that the
# REST benchmarks measure: the plug-in in tavel-sim and the web layer's plaintext route.
python=/usr/bin/python3
tick=$(getconf CLK_TCK)

for tool in wrk taskset curl openssl; do
  command -v "$tool" > /dev/null || { echo "bench: $tool is missing"; exit 1; }
done

work=$(mktemp -d)
pids=()
cleanup() {
  for pid in "${pids[@]}"; do
    if kill -0 "$pid" 2>/dev/null; then kill -TERM "$pid"; wait "$pid" 2>/dev/null || true; fi
  done
  rm -rf "$work"
}
trap cleanup EXIT

require_built() {  # program... : each must exist in the build directory
  local program
  for program; do
    [ -e "$program" ] || { echo "bench: $program is missing (build it first)"; exit 1; }
  done
}

free_port() {
  "$python" -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'
}
wait_for() {  # url [curl options...]
  local url=$1; shift
  for _ in $(seq 1 300); do
    if curl -s -o /dev/null --max-time 1 "$@" "$url"; then return 0; fi
    sleep 0.1
  done
  echo "bench: nothing serves $url"; exit 1
}
cpu_ticks() {  # pid: user + system time of the whole process, in clock ticks
  awk '{print $14 + $15}' "/proc/$1/stat"
}
rss_kb() {  # pid
  awk '/^VmRSS/ {print $2}' "/proc/$1/status"
}

# One wrk run against url while the server pid is measured. Prints
# "requests/s p50 p99 cpu-us-per-request".
measure() {  # pid url [wrk options...]
  local pid=$1 url=$2; shift 2
  local before after out requests
  before=$(cpu_ticks "$pid")
  out=$(taskset -c 1 wrk -t1 -c64 -d"$duration" --latency "$@" "$url")
  after=$(cpu_ticks "$pid")
  if grep -q "Non-2xx" <<<"$out"; then
    echo "bench: $url answered errors:" >&2; echo "$out" >&2; exit 1
  fi
  requests=$(awk '/requests in/ {print $1}' <<<"$out")
  awk -v ticks=$((after - before)) -v tick="$tick" -v requests="$requests" '
    /Requests\/sec/ {rps = $2}
    $1 == "50%" {p50 = $2}
    $1 == "99%" {p99 = $2}
    END {printf "%.0f %s %s %.2f\n", rps, p50, p99, ticks * 1e6 / tick / requests}' <<<"$out"
}

# The median of `runs` measurements, by requests/s.
median() {  # pid url [wrk options...]
  local results=()
  for _ in $(seq 1 "$runs"); do results+=("$(measure "$@")"); done
  printf '%s\n' "${results[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p"
}

row() {  # label "rps p50 p99 cpu"
  local rps p50 p99 cpu
  read -r rps p50 p99 cpu <<<"$2"
  printf '%-40s %12s %10s %10s %10s us\n' "$1" "$rps" "$p50" "$p99" "$cpu"
}

# tavel-sim with libkelo.so from $build on one I/O thread pinned to CPU 0: its configuration and
# log settings written into $work, the fixture FILE, and the further options of tavel-sim
# (sessions, --no-demo-models); $sim_config_extra, when set, is appended to the configuration
# object (", \"metrics-token\": \"t\""), and $sim_web_app_extra to the web configuration's "app"
# object (", \"client_max_body_size\": \"1G\""). Sets sim_pid and http_port; stopped at exit.
start_sim_with_plugin() {  # fixture-file [tavel-sim options...]
  local fixture=$1; shift
  mkdir -p "$work/logs" "$work/www"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=localhost" \
    -keyout "$work/server.key" -out "$work/server.crt" 2>/dev/null
  http_port=$(free_port)
  local https_port
  https_port=$(free_port)
  cat > "$work/config.json" <<JSON
{
  "UserName": "kelo", "Password": "kelo-bench", "LogDirectory": "$work/logs",
  "PX3LocalhostIp": ["127.0.0.1"],
  "server-certificate": "$work/server.crt", "server-private-key": "$work/server.key",
  "https-port": $https_port, "http-port": $http_port,
  "drogon-config": "$work/web-config.json", "bypass-cors": false, "cors-origin": ""${sim_config_extra:-}
}
JSON
  cat > "$work/web-config.json" <<JSON
{
  "app": { "number_of_threads": 1, "document_root": "$work/www", "idle_connection_timeout": 0,
           "max_connections_per_ip": 0${sim_web_app_extra:-} },
  "plugins": [
    { "name": "WebKeloInterface", "config": {} },
    { "name": "ResourceListenerManager", "config": {} },
    { "name": "BackgroundTaskQueue", "config": { "threads_num": 1, "name": "keloBackground" } }
  ]
}
JSON
  cat > "$work/log.conf" <<'CONF'
* GLOBAL:
    ENABLED              =  true
    TO_FILE              =  true
    TO_STANDARD_OUTPUT   =  false
* DEBUG:
    ENABLED              =  false
CONF
  # sim_wrapper: a program that runs tavel-sim, e.g. valgrind (bench/monitoring/instructions.sh).
  taskset -c 0 ${sim_wrapper[@]+"${sim_wrapper[@]}"} "$build/sim/tavel-sim" --plugin "$build/src/libkelo.so" \
    --log-config "$work/log.conf" --config "$work/config.json" --fixture "$fixture" "$@" \
    > "$work/sim.out" 2>&1 &
  sim_pid=$!
  pids+=("$sim_pid")
}

# The web layer alone (bench-web-plaintext, one I/O thread pinned to CPU 0), the yardstick every
# route is measured beside. Sets plain_pid and plaintext_url.
start_plaintext() {
  local port
  port=$(free_port)
  taskset -c 0 "$build/bench/web/bench-web-plaintext" --threads 1 --port "$port" \
    > "$work/plaintext.out" 2>&1 &
  plain_pid=$!
  pids+=("$plain_pid")
  plaintext_url="http://127.0.0.1:$port/plaintext"
  wait_for "$plaintext_url"
}

# KELO_BENCH_PERF=FILE: record a call-graph profile of the server pid into FILE under the load
# of url (perf record -g; KELO_BENCH_PERF_OPTIONS replaces "-g") and end the script there.
profile_if_asked() {  # pid url [wrk options...]
  [ -n "${KELO_BENCH_PERF:-}" ] || return 0
  local pid=$1 url=$2; shift 2
  taskset -c 1 wrk -t1 -c64 -d12s "$@" "$url" > /dev/null &
  local wrk_pid=$!
  sleep 2
  perf record ${KELO_BENCH_PERF_OPTIONS:--g} -p "$pid" -o "$KELO_BENCH_PERF" -- sleep 8
  wait "$wrk_pid"
  exit 0
}

# The fan-out benchmarks' servers print "ready PORT" once they listen and "updated ..." once
# their last change has been dispatched.
ready_port() {  # server-output-file: prints the port, or fails when none comes within 30 s
  local port=
  for _ in $(seq 300); do
    port=$(awk '/^ready/ {print $2}' "$1")
    if [ -n "$port" ]; then echo "$port"; return 0; fi
    sleep 0.1
  done
  echo "bench: the server did not start" >&2
  exit 1
}
stop_when_updated() {  # server-pid server-output-file
  for _ in $(seq 300); do
    if grep -q '^updated' "$2"; then break; fi
    sleep 0.1
  done
  kill -TERM "$1"
  wait "$1" 2>/dev/null || true
}

# One pass of a fan-out benchmark: the server command (the array named by the first argument)
# started with its output in $work/server.out, the client command (the array named by the
# second) run with "--port P" added once the server listens, its output in $work/client.out, and
# the server stopped once its last change has been dispatched.
fanout_pass() {  # server-command-array client-command-array
  local -n pass_server=$1 pass_client=$2
  "${pass_server[@]}" > "$work/server.out" &
  local server_pid=$!
  pids+=("$server_pid")
  local port
  port=$(ready_port "$work/server.out")
  "${pass_client[@]}" --port "$port" > "$work/client.out"
  stop_when_updated "$server_pid" "$work/server.out"
}
# The summaries of the last pass: the client's line, then the server's "connected" and "updated".
fanout_summaries() {
  sed 's/^/  client: /' "$work/client.out"
  grep -E '^(connected|updated)' "$work/server.out" | sed 's/^/  server: /'
}
# The report of the last pass: its description with the load of the moment, the summaries and
# the frames missing.
fanout_report() {  # description...
  echo "$* (load $(cut -d' ' -f1-3 /proc/loadavg))"
  fanout_summaries
  fanout_missing
}
# The frames of the last pass that every live client should have received (every change the
# server made), those the client received, and the difference.
fanout_missing() {
  local changes live received
  changes=$(awk '/^updated/ {print $2}' "$work/server.out")
  live=$(grep -o 'live [0-9]*' "$work/client.out" | cut -d' ' -f2)
  received=$(grep -o 'frames_received [0-9]*' "$work/client.out" | cut -d' ' -f2)
  echo "  frames expected $((changes * live)) (changes $changes x live clients $live)," \
    "received $received, missing $((changes * live - received))"
}

# The routes measured in turn beside the web layer's plaintext route, `runs` times: the machine's
# load, a 2 s warm-up of each route and of plaintext, then each run's rows as they come (plaintext
# first), so that the machine's load of the moment weighs on both sides of a ratio alike. A route
# is given by its name, the server's pid, its URL and the name of an array of its wrk options.
# Leaves the medians by requests/s in medians[NAME] ("rps p50 p99 cpu", plaintext's under
# "plaintext") and the median of each run's ratio of the route's requests/s to plaintext's in
# ratios[NAME].
declare -A medians ratios
beside_plaintext() {  # name pid url options-array [name pid url options-array ...]
  local names=() servers=() urls=() options=()
  while [ $# -gt 0 ]; do
    names+=("$1"); servers+=("$2"); urls+=("$3"); options+=("$4[@]"); shift 4
  done
  local i run plain result rps p50 p99 cpu pair middle
  declare -A rows=() run_ratios=()
  echo "machine: $(nproc) cores, load $(cut -d' ' -f1-3 /proc/loadavg) at the start"
  for i in "${!names[@]}"; do
    taskset -c 1 wrk -t1 -c64 -d2s "${!options[i]}" "${urls[i]}" > /dev/null
  done
  taskset -c 1 wrk -t1 -c64 -d2s "$plaintext_url" > /dev/null
  printf '%-4s %-34s %12s %10s %10s %14s\n' "run" "route (1 I/O thread, -c64)" "requests/s" \
    "p50" "p99" "server CPU/req"
  for run in $(seq 1 "$runs"); do
    plain=$(measure "$plain_pid" "$plaintext_url")
    rows[plaintext]+="$plain"$'\n'
    local pairs=("plaintext:$plain")
    for i in "${!names[@]}"; do
      result=$(measure "${servers[i]}" "${urls[i]}" "${!options[i]}")
      rows[${names[i]}]+="$result"$'\n'
      run_ratios[${names[i]}]+="$(awk -v d="${result%% *}" -v p="${plain%% *}" \
        'BEGIN {printf "%.4f", d / p}')"$'\n'
      pairs+=("${names[i]}:$result")
    done
    for pair in "${pairs[@]}"; do
      read -r rps p50 p99 cpu <<<"${pair#*:}"
      printf '%-4s %-34s %12s %10s %10s %12s us\n' "$run" "${pair%%:*}" "$rps" "$p50" "$p99" \
        "$cpu"
    done
  done
  middle=$(((runs + 1) / 2))
  medians[plaintext]=$(printf '%s' "${rows[plaintext]}" | sort -n | sed -n "${middle}p")
  for i in "${!names[@]}"; do
    medians[${names[i]}]=$(printf '%s' "${rows[${names[i]}]}" | sort -n | sed -n "${middle}p")
    ratios[${names[i]}]=$(printf '%s' "${run_ratios[${names[i]}]}" | sort -n | sed -n "${middle}p")
  done
  echo "medians of $runs runs (load $(cut -d' ' -f1-3 /proc/loadavg) at the end):"
}
median_row() {  # label "rps p50 p99 cpu"
  local rps p50 p99 cpu
  read -r rps p50 p99 cpu <<<"$2"
  printf '%-39s %12s %10s %10s %12s us\n' "$1" "$rps" "$p50" "$p99" "$cpu"
}

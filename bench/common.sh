# Shared by the benchmark scripts, sourced from the repository's root after `duration` and
# `runs` are set: the tools, a scratch folder whose servers are stopped at exit, free ports,
# waiting for a URL, and wrk runs measured against a server's CPU time.
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

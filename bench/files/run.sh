#!/usr/bin/env bash
# bench/files/run.sh [BUILD_DIR]: a 256 MB upload over HTTP on loopback
# (POST "/1/api/files/upgradeFile?targetMountedVolume=ONBOARD_FILESYSTEM", one multipart file
# part, sent by curl), beside dd writing the same bytes to the same folder in the same run:
#   dd if=<the 256 MB file> of=<storage>/dd.bin bs=1M conv=fsync
#   curl -F file=@<the 256 MB file> URL        (then sync of the stored file)
# Both are measured KELO_BENCH_RUNS (3) times, in turn; the medians of MB/s are reported, their
# ratio, and the largest growth of tavel-sim's resident set during an upload (sampled every
# 20 ms, over the RSS before it). The server runs with one I/O thread pinned to CPU 0, the body
# kept in a temporary file above 64 kB; curl and dd run on CPU 1.
# BUILD_DIR (default build/release) must hold tavel-sim and libkelo.so of a Release build.
# KELO_BENCH_SIZE_MB (256) changes the size.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${1:-build/release}
runs=${KELO_BENCH_RUNS:-3}
size_mb=${KELO_BENCH_SIZE_MB:-256}
duration=1s
source bench/common.sh

storage="$work/storage"
mkdir -p "$storage/data/halvor/files" "$work/uploads"
cat > "$work/fixture.json" <<JSON
{
  "users": [{"name": "kelo", "password": "kelo-bench", "role": "administrator"},
            {"name": "bench", "password": "bench-password", "role": "administrator"}],
  "sessionTimeoutSeconds": 86400,
  "models": ["files"],
  "files": {"storageRoot": "$storage"}
}
JSON
sim_config_extra=", \"storage-root\": \"$storage\", \"usb-remount\": false"
sim_web_app_extra=", \"client_max_body_size\": \"1G\", \"client_max_memory_body_size\": \"64K\",
  \"client_max_disk_body_size\": \"1G\", \"client_max_disk_body_total\": \"2G\",
  \"upload_path\": \"$work/uploads\""
start_sim_with_plugin "$work/fixture.json" --no-demo-models --session bench-session=bench
url="http://127.0.0.1:$http_port/1/api/files/upgradeFile?targetMountedVolume=ONBOARD_FILESYSTEM"
wait_for "http://127.0.0.1:$http_port/1/api/files/mountedVolumes?fileType=UPGRADE_FILE" \
  -H "Cookie: SessionID=bench-session"

payload="$work/payload.bin"
head -c $((size_mb * 1024 * 1024)) /dev/urandom > "$payload"
target="$storage/data/halvor/files"

now() { date +%s.%N; }
mb_per_s() { awk -v mb="$size_mb" -v s="$1" 'BEGIN {printf "%.0f", mb / s}'; }

dd_once() {
  rm -f "$target/dd.bin"
  sync
  local start end
  start=$(now)
  taskset -c 1 dd if="$payload" of="$target/dd.bin" bs=1M conv=fsync status=none
  end=$(now)
  rm -f "$target/dd.bin"
  mb_per_s "$(awk -v a="$start" -v b="$end" 'BEGIN {print b - a}')"
}

upload_once() {  # prints "MB/s rss-growth-kB"
  rm -f "$target/payload.bin"
  sync
  local before peak=0 start end status sampler
  before=$(rss_kb "$sim_pid")
  ( while kill -0 "$sim_pid" 2>/dev/null; do rss_kb "$sim_pid"; sleep 0.02; done ) \
    > "$work/rss.txt" &
  sampler=$!
  start=$(now)
  status=$(taskset -c 1 curl -s -o "$work/answer.txt" -w '%{http_code}' \
    -H "Cookie: SessionID=bench-session" -H "Expect:" -F "file=@$payload" "$url")
  sync "$target/payload.bin" 2>/dev/null || sync
  end=$(now)
  kill "$sampler" 2>/dev/null; wait "$sampler" 2>/dev/null || true
  if [ "$status" != 200 ]; then echo "bench: upload answered $status: $(cat "$work/answer.txt")" >&2; exit 1; fi
  cmp -s "$payload" "$target/payload.bin" || { echo "bench: stored file differs" >&2; exit 1; }
  peak=$(sort -n "$work/rss.txt" | tail -1)
  echo "$(mb_per_s "$(awk -v a="$start" -v b="$end" 'BEGIN {print b - a}')") $((peak - before))"
}

dd_results=(); upload_results=(); rss_results=()
for _ in $(seq 1 "$runs"); do
  dd_results+=("$(dd_once)")
  read -r rate growth <<<"$(upload_once)"
  upload_results+=("$rate"); rss_results+=("$growth")
done
pick() { printf '%s\n' "$@" | sort -n | sed -n "$((($# + 1) / 2))p"; }
dd_median=$(pick "${dd_results[@]}")
upload_median=$(pick "${upload_results[@]}")
rss_max=$(printf '%s\n' "${rss_results[@]}" | sort -n | tail -1)
echo "runs: dd ${dd_results[*]} MB/s; upload ${upload_results[*]} MB/s; RSS growth ${rss_results[*]} kB"
printf '%-34s %8s MB/s\n' "dd, same bytes, same folder" "$dd_median"
printf '%-34s %8s MB/s\n' "upload over HTTP (${size_mb} MB)" "$upload_median"
awk -v u="$upload_median" -v d="$dd_median" 'BEGIN {printf "%-34s %8.2f\n", "upload / dd", u / d}'
printf '%-34s %8s kB (largest of the runs)\n' "tavel-sim RSS growth during upload" "$rss_max"

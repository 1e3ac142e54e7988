#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test: the Release build (gcc), the
# AddressSanitizer+UndefinedBehaviorSanitizer build (clang, with the libFuzzer targets, which then
# run 30 s each), and the concurrency tests under ThreadSanitizer (clang). Prints the wall time of
# each step and exits non-zero on the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Compiler cache entries that do not depend on where the checkout lies.
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD}
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}

# Wall time and CPU time (user + system, of every process the step ran) of every step, printed
# when the step ends and again, all together, at the end (also when a step fails, so that a CI
# log shows how far it got). On a shared machine the wall time depends on the neighbours' load;
# the CPU time much less.
step_times=()
passed=
current=
current_start=$SECONDS
current_cpu=0
mmss() { printf '%d:%02d' $(($1 / 60)) $(($1 % 60)); }
times_file=$(mktemp)
cpu_now=0
read_cpu() {  # cpu_now = user + system seconds of the children waited for so far
  # `times` must run in this shell: in a pipe or $(...) it would see a subshell's zero counts.
  times >"$times_file"
  cpu_now=$(tail -1 "$times_file" | awk '{ s = 0; for (i = 1; i <= 2; i++) {
    split($i, t, "m"); sub("s", "", t[2]); s += t[1] * 60 + t[2] } printf "%d\n", s }')
}
end_step() {
  if [ -n "$current" ]; then
    read_cpu
    local took=$((SECONDS - current_start)) cpu=$((cpu_now - current_cpu))
    step_times+=("$(printf '%-72s %6s %6s' "$current" "$(mmss "$took")" "$(mmss "$cpu")")")
    printf '=== %s: %s wall, %s CPU ===\n' "$current" "$(mmss "$took")" "$(mmss "$cpu")"
  fi
  current=
}
step() {
  end_step
  current=$*
  current_start=$SECONDS
  read_cpu
  current_cpu=$cpu_now
  printf '\n=== %s ===\n' "$*"
}
summary() {
  local status=$?
  end_step
  read_cpu
  printf '\n=== Time per step ===\n%-72s %6s %6s\n' "Step" "wall" "CPU"
  printf '%s\n' "${step_times[@]}"
  printf '%-72s %6s %6s\n' "Total" "$(mmss "$SECONDS")" "$(mmss "$cpu_now")"
  if [ "$status" -ne 0 ] || [ -z "$passed" ]; then printf 'FAILED (exit status %d)\n' "$status"; fi
  rm -f "$times_file"
}
trap summary EXIT

step "Release build"
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release
step "Release tests"
ctest --test-dir build/release --output-on-failure -j2

# clang: its sanitizer builds compile in about half the time of gcc's, and one build serves the
# tests and the libFuzzer targets.
step "AddressSanitizer + UndefinedBehaviorSanitizer build, with the fuzz targets"
CC=clang CXX=clang++ scripts/build.sh build/asan -DCMAKE_BUILD_TYPE=Debug -DKELO_ASAN=ON \
  -DKELO_FUZZ=ON -DKELO_BENCH=OFF
step "AddressSanitizer + UndefinedBehaviorSanitizer tests"
ctest --test-dir build/asan --output-on-failure -j2 -LE nosanitizer

if [ -x fuzz/run.sh ]; then
  step "Fuzz targets, 30 s each"
  fuzz/run.sh 30 build/asan
fi

step "ThreadSanitizer build"
CC=clang CXX=clang++ KELO_TARGET=concurrency_tests scripts/build.sh build/tsan \
  -DCMAKE_BUILD_TYPE=Debug -DKELO_TSAN=ON -DKELO_BENCH=OFF
step "ThreadSanitizer concurrency tests"
ctest --test-dir build/tsan --output-on-failure -j2 -L concurrency

end_step
passed=yes
printf '\nAll tests passed.\n'

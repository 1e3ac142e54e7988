#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test: the Release build, the
# AddressSanitizer+UndefinedBehaviorSanitizer build, and the concurrency tests under
# ThreadSanitizer. Exits non-zero on the first failure.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Compiler cache entries that do not depend on where the checkout lies.
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD}
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}

step() { printf '\n=== %s ===\n' "$*"; }

step "Release build"
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release
step "Release tests"
ctest --test-dir build/release --output-on-failure -j2

step "AddressSanitizer + UndefinedBehaviorSanitizer build"
scripts/build.sh build/asan -DCMAKE_BUILD_TYPE=Debug -DKELO_ASAN=ON -DKELO_BENCH=OFF
step "AddressSanitizer + UndefinedBehaviorSanitizer tests"
ctest --test-dir build/asan --output-on-failure -j2 -LE nosanitizer

step "ThreadSanitizer build"
KELO_TARGET=concurrency_tests scripts/build.sh build/tsan -DCMAKE_BUILD_TYPE=Debug -DKELO_TSAN=ON \
  -DKELO_BENCH=OFF
step "ThreadSanitizer concurrency tests"
ctest --test-dir build/tsan --output-on-failure -j2 -L concurrency

if [ -x fuzz/run.sh ]; then
  step "Fuzz targets, 30 s each"
  fuzz/run.sh 30
fi
step "All tests passed"

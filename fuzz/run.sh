#!/usr/bin/env bash
# fuzz/run.sh [SECONDS [BUILD_DIR]]: builds the libFuzzer targets with clang in BUILD_DIR
# (build/fuzz by default, configured here once; scripts/test.sh passes its clang ASan+UBSan build,
# configured with -DKELO_FUZZ=ON) and runs each target that has a seed corpus in
# fuzz/corpus/<target>/ for SECONDS (60 by default), with fuzz/<target>.dict as its dictionary
# when there is one. Each run works on a scratch copy of the corpus, so that the committed seeds
# never grow. Fails on the first crash, leak, sanitizer report or broken property; the input that
# caused it is kept as BUILD_DIR/artifacts/<target>-crash-*.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
dir=${2:-build/fuzz}

if [ ! -f "$dir/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DKELO_FUZZ=ON -DKELO_TESTS=OFF -DKELO_BENCH=OFF
fi

targets=()
for corpus in fuzz/corpus/*/; do
  targets+=("$(basename "$corpus")")
done
cmake --build "$dir" --target "${targets[@]}" -j"${KELO_JOBS:-2}"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$dir/artifacts"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

for target in "${targets[@]}"; do
  printf '\n--- %s, %s s ---\n' "$target" "$seconds"
  mkdir -p "$scratch/$target"
  cp -R "fuzz/corpus/$target/." "$scratch/$target/"
  options=(-max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="$dir/artifacts/$target-")
  if [ -f "fuzz/$target.dict" ]; then options+=(-dict="fuzz/$target.dict"); fi
  "$dir/fuzz/$target" "${options[@]}" "$scratch/$target"
done
printf '\nAll fuzz targets ran %s s without a crash.\n' "$seconds"

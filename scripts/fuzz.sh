#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build-fuzz/ and runs each of them for a bounded time.
#   scripts/fuzz.sh                                  # every fuzz/fuzz_*.cpp, 60 s each
#   QXNUM_FUZZ_SECONDS=10 scripts/fuzz.sh fuzz_xml   # chosen targets, 10 s each
# Each run starts from a copy of fuzz/corpus/<target>/, so the committed corpus never grows.
# Inputs that crash are kept in build-fuzz/artifacts/<target>/. Exits non-zero when a target fails.
set -euo pipefail
cd "$(dirname "$0")/.."

QXNUM_WITH_FUZZ=1 scripts/deps.sh

seconds=${QXNUM_FUZZ_SECONDS:-60}
jobs=${QXNUM_JOBS:-$(nproc 2>/dev/null || echo 2)}
dir=build-fuzz

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for f in fuzz/fuzz_*.cpp; do
    [ -e "$f" ] && targets+=("$(basename "$f" .cpp)")
  done
fi
if [ ${#targets[@]} -eq 0 ]; then
  echo "fuzz.sh: no fuzz targets in fuzz/"
  exit 0
fi

cmake -S . -B "$dir" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQXNUM_BUILD_FUZZ=ON -DQXNUM_BUILD_TESTS=OFF -DQXNUM_BUILD_BENCH=OFF -DQXNUM_BUILD_APPS=OFF \
  -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link,address,undefined
cmake --build "$dir" -j "$jobs" --target "${targets[@]}"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=()
for t in "${targets[@]}"; do
  corpus="$work/$t"
  artifacts="$dir/artifacts/$t"
  mkdir -p "$corpus" "$artifacts"
  if [ -d "fuzz/corpus/$t" ]; then
    cp -R "fuzz/corpus/$t/." "$corpus/"
  fi
  echo "== $t: ${seconds} s"
  # halt_on_error turns every undefined-behaviour report into a failure.
  if ! ASAN_OPTIONS=abort_on_error=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    "$dir/fuzz/$t" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$artifacts/" "$corpus"; then
    failed+=("$t")
  fi
done

if [ ${#failed[@]} -ne 0 ]; then
  echo "fuzz.sh: failed: ${failed[*]} (inputs in $dir/artifacts/)" >&2
  exit 1
fi
echo "fuzz.sh: all ${#targets[@]} target(s) ran ${seconds} s without a failure"

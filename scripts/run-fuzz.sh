#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang and runs each for a set time on its seed corpus.
# Usage: scripts/run-fuzz.sh [seconds per harness] [harness ...]
# Findings are written to build-fuzz/findings/<harness>/; the script fails on the first one.
# The tool is configured too (not built): the bridge's harness links its layers.
# TAV_WARNINGS_AS_ERRORS=ON makes warnings errors; FUZZ_CMAKE_ARGS adds configure arguments.
set -euo pipefail

cd "$(dirname "$0")/.."
seconds="${1:-${FUZZ_SECONDS:-60}}"
shift || true
build="${FUZZ_BUILD_DIR:-build-fuzz}"

# libFuzzer and the sanitizer runtimes come with clang's compiler-rt.
bash scripts/install-deps.sh clang libclang-rt-dev

cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Release \
  -DTAV_BUILD_FUZZ=ON -DTAV_BUILD_TESTS=OFF -DTAV_BUILD_TOOLS=ON \
  -DTAV_WARNINGS_AS_ERRORS="${TAV_WARNINGS_AS_ERRORS:-OFF}" ${FUZZ_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" --target fuzzers -j "${JOBS:-$(nproc)}"

harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then
  for dir in fuzz/corpus/*/; do harnesses+=("$(basename "$dir")"); done
fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
for harness in "${harnesses[@]}"; do
  # New inputs go to a scratch corpus so the committed seeds stay small.
  work="$build/corpus/$harness"
  findings="$build/findings/$harness"
  mkdir -p "$work" "$findings"
  log="$build/findings/$harness.log"
  echo "== $harness: ${seconds}s"
  if ! "$build/fuzz/$harness" -max_total_time="$seconds" -print_final_stats=1 \
      -artifact_prefix="$findings/" "$work" "fuzz/corpus/$harness" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    echo "$harness found a problem; the input is in $findings/" >&2
    exit 1
  fi
  grep -E '^(#[0-9]+ +DONE|stat::number_of_executed_units|stat::peak_rss_mb)' "$log" || true
done

# Once more with every log level on over the seeds, so the message building runs too.
for harness in "${harnesses[@]}"; do
  TAV_FUZZ_LOG=1 "$build/fuzz/$harness" -runs=0 "fuzz/corpus/$harness" >/dev/null 2>&1 \
    || { echo "$harness failed with logging on" >&2; exit 1; }
done
echo "fuzzing passed: ${harnesses[*]}"

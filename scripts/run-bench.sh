#!/usr/bin/env bash
# Builds the benchmarks in Release (build-bench) and runs them. Extra arguments go to the
# benchmark program (for example --benchmark_filter=FromKnxValue).
# TAV_BENCH_LOG_LEVEL selects the log level the figures are taken at (INFO by default).
set -euo pipefail

cd "$(dirname "$0")/.."
build="${BENCH_BUILD_DIR:-build-bench}"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_BENCH=ON -DTAV_BUILD_TESTS=OFF \
  -DTAV_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target TavBench -j "${JOBS:-$(nproc)}"
"$build/bench/TavBench" "$@"

# The device stack through knxd needs the tool's layers: a build of its own, unless a filter
# for the library's benchmarks was given.
if [ "$#" -eq 0 ]; then
  cmake -S . -B "$build-devicestack" -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_BENCH=ON -DTAV_BUILD_TESTS=OFF \
    -DTAV_BUILD_TOOLS=ON >/dev/null
  cmake --build "$build-devicestack" --target DeviceStackBench -j "${JOBS:-$(nproc)}"
  "$build-devicestack/bench/DeviceStackBench"
fi

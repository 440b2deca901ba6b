#!/usr/bin/env bash
# Installs what is missing, builds everything with warnings as errors and
# runs the whole test suite with CTest, the format check included. The
# PostgreSQL tests start their own throwaway server. Exits non-zero when the
# build or any test fails; the last lines are CTest's summary.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VEKLARI_TEST_BUILD_DIR:-$root/build-test}
jobs=${VEKLARI_JOBS:-2}

"$root/scripts/install-deps.sh"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVEKLARI_BUILD_TESTS=ON -DVEKLARI_BUILD_BENCHMARKS=ON -DVEKLARI_WARNINGS_AS_ERRORS=ON
cmake --build "$build" -j"$jobs"

cd "$build"
exec ctest --output-on-failure -j"$jobs" --no-tests=error

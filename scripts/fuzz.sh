#!/usr/bin/env bash
# Runs the fuzz targets of fuzz/ with libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, each for the given number of seconds:
#   scripts/fuzz.sh [TARGET|all] [SECONDS]     (defaults: all, 600)
# Builds with clang into build-fuzz/ (installing clang when it is missing).
# Each target starts from its seeds (tests/data/fuzz-seeds/TARGET) and its
# earlier findings (tests/data/fuzz/TARGET) and keeps its working corpus in
# build-fuzz/corpus/TARGET. An input that crashes or trips a sanitizer is
# written to tests/data/fuzz/TARGET/, where the normal test command replays
# it (fuzz_replay_TARGET): fix the parser, keep the input.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
target=${1:-all}
seconds=${2:-600}
build=${VEKLARI_FUZZ_BUILD:-$root/build-fuzz}

FUZZ_PACKAGES=(clang libclang-rt-14-dev)
missing=()
for package in "${FUZZ_PACKAGES[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$package")
done
if ((${#missing[@]} > 0)); then
    as_root=()
    [[ $(id -u) -eq 0 ]] || as_root=(sudo)
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get update
    "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi

# The targets are the fuzz_NAME.cpp files.
mapfile -t all < <(cd "$root/fuzz" && ls fuzz_*.cpp | sed 's/^fuzz_//; s/\.cpp$//')
if [[ "$target" == all ]]; then
    targets=("${all[@]}")
elif [[ -f "$root/fuzz/fuzz_$target.cpp" ]]; then
    targets=("$target")
else
    echo "unknown target $target; the targets: ${all[*]}" >&2
    exit 2
fi

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ "${launcher[@]}" \
    -DVEKLARI_BUILD_FUZZERS=ON -DVEKLARI_BUILD_TESTS=OFF -DVEKLARI_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j"${VEKLARI_FUZZ_JOBS:-2}" --target "${targets[@]/#/fuzz_}"

export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
status=0
for name in "${targets[@]}"; do
    corpus=$build/corpus/$name
    findings=$root/tests/data/fuzz/$name
    seeds=$root/tests/data/fuzz-seeds/$name
    mkdir -p "$corpus" "$findings"
    log=$build/fuzz-$name.log
    echo "== $name: $seconds s"
    set +e
    "$build/fuzz/fuzz_$name" "$corpus" "$seeds" "$findings" \
        -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$findings/" -print_final_stats=1 >"$log" 2>&1
    result=$?
    set -e
    # libFuzzer writes into the first corpus directory only; the findings
    # directory stays as it was unless something was found.
    rmdir --ignore-fail-on-non-empty "$findings"
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    if ((result == 0)); then
        echo "   no finding: ${runs:-?} runs, ${rate:-?} execs/s"
    else
        echo "   FINDING (exit $result), see $log; inputs in $findings:"
        ls "$findings" 2>/dev/null | sed 's/^/     /'
        status=1
    fi
done
exit $status

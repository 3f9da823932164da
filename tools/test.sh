#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test three times over: as built for
# use, under AddressSanitizer with UndefinedBehaviorSanitizer, and, for the concurrency tests
# (those with "Concurrent" in their name), under ThreadSanitizer. Each build has its own
# directory, configured in one step and rebuilt incrementally on later runs.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/install-deps.sh

jobs="$(nproc)"
# DIR [CMAKE_OPTION...]
build() {
    local dir="$1"
    shift
    cmake -S . -B "${dir}" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
    cmake --build "${dir}"
}
# DIR SANITIZERS
sanitized_build() {
    # GCC's flow analysis misreads sanitizer instrumentation as uninitialised reads.
    local flags="-fsanitize=$2 -fno-sanitize-recover=all -fno-omit-frame-pointer"
    flags+=" -Wno-maybe-uninitialized"
    build "$1" -DCMAKE_CXX_FLAGS="${flags}" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=$2" \
        -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=$2"
}

build build
ctest --test-dir build --output-on-failure --timeout 300 -j"${jobs}"
# A device's test runner runs a gtest binary as one process: each unit-test binary must pass that
# way too, in any order. Two seeds, two orders.
for binary in tests/performance/performance_tests tests/perfctl/perfctl_tests \
    tests/binder/binder_ndk_test; do
    for seed in 1 2; do
        echo "one process, shuffled with seed ${seed}: ${binary}"
        (cd build && timeout 300 "${binary}" --gtest_shuffle --gtest_random_seed="${seed}" \
            --gtest_brief=1)
    done
done

sanitized_build build-asan address,undefined
ASAN_OPTIONS=halt_on_error=1:abort_on_error=0 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    ctest --test-dir build-asan --output-on-failure --timeout 300 -j"${jobs}"

sanitized_build build-tsan thread
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    ctest --test-dir build-tsan --output-on-failure --timeout 300 -j"${jobs}" -R Concurrent

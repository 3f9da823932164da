#!/usr/bin/env bash
# Builds the daemon if needed and serves in the foreground.
#   tools/serve.sh [--root DIR] [--property KEY=VALUE]...
# Without --root it serves a fresh copy of the simulated kernel 5.15 device (sim/kernel-5.15);
# the repository copy is never written.
set -euo pipefail
cd "$(dirname "$0")/.."

args=("$@")
if [[ " $* " != *" --root "* ]]; then
    copy=$(mktemp -d /tmp/performance-device.XXXXXX)
    cp -a sim/kernel-5.15/. "${copy}/"
    echo "serving a copy of sim/kernel-5.15 at ${copy}" >&2
    args=(--root "${copy}" "${args[@]}")
fi

if [[ ! -f build/build.ninja ]]; then
    tools/install-deps.sh
    cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build build --target vendor.vyren.hardware.performance-service perfctl >&2
exec build/performance/vendor.vyren.hardware.performance-service "${args[@]}"

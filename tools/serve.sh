#!/usr/bin/env bash
# Builds the daemon if needed and serves in the foreground.
#   tools/serve.sh [ROOT] [--property KEY=VALUE]...
# ROOT is the node root to serve.
set -euo pipefail
cd "$(dirname "$0")/.."

root=${1:?usage: tools/serve.sh ROOT [--property KEY=VALUE]...}
shift

if [[ ! -x build/performance/vendor.vyren.hardware.performance-service ]]; then
    tools/install-deps.sh
    cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build build --target vendor.vyren.hardware.performance-service
exec build/performance/vendor.vyren.hardware.performance-service --root "${root}" "$@"

#!/usr/bin/env bash
# Installs, with apt-get, whatever the host build and tests need and this machine lacks.
set -euo pipefail

packages=(
    cmake ninja-build g++ python3
    aidl android-libbase-dev android-liblog-dev
    blueprint-tools
    clang libc++-dev libc++abi-dev
    googletest libgtest-dev libgmock-dev libbenchmark-dev
)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "${package}" 2>/dev/null | grep -q "install ok installed" ||
        missing+=("${package}")
done
if ((${#missing[@]} > 0)); then
    echo "install-deps: installing ${missing[*]}"
    sudo=()
    [[ $(id -u) -eq 0 ]] || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq "${missing[@]}"
fi

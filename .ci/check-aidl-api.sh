#!/usr/bin/env bash
# Verifies the frozen API dumps of vendor.vyren.hardware.performance:
#  - each frozen version's .hash matches the hash the interface tooling would
#    compute for it, so a hand-edited dump cannot slip through;
#  - the latest frozen version (2) is exactly the in-tree sources plus the dump
#    header, file for file;
#  - each version is a compatible extension of the one before (1 -> 2 -> current):
#    no operation or field moved, removed or retyped, checked by aidl --checkapi,
#    and no enum value changed.
# Run from the repository root.
set -euo pipefail

readonly aidl_root="performance/aidl"
readonly src_dir="${aidl_root}/vendor/vyren/hardware/performance"
readonly api_dir="${aidl_root}/aidl_api/vendor.vyren.hardware.performance"
readonly pkg_path="vendor/vyren/hardware/performance"
readonly latest_version=2

# The comment block the interface tooling prepends to every dumped file.
# shellcheck disable=SC2016 # the backticks are part of the text
readonly dump_header='///////////////////////////////////////////////////////////////////////////////
// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE.                          //
///////////////////////////////////////////////////////////////////////////////

// This file is a snapshot of an AIDL file. Do not edit it manually. There are
// two cases:
// 1). this is a frozen version file - do not edit this in any case.
// 2). this is a '"'current'"' file. If you make a backwards compatible change to
//     the interface (from the latest frozen version), the build system will
//     prompt you to update this file with `m <name>-update-api`.
//
// You must not make a backward incompatible change to any AIDL file built
// with the aidl_interface module type with versions property set. The module
// type is used to build AIDL files in a way that they can be used across
// independently updatable components of the system. If a device is shipped
// with such a backward incompatible change, it has a high risk of breaking
// later when a module using the interface is updated, e.g., Mainline modules.
'
readonly header_lines=$(($(printf '%s' "${dump_header}" | wc -l) + 1))

failures=0
fail() {
    echo "check-aidl-api: FAIL: $*"
    failures=$((failures + 1))
}

# Same recipe as the platform: sha1 over the sorted per-file sha1 list followed
# by the previous version ("latest-version" for the first one).
compute_hash() {
    local version_dir="$1" previous="$2"
    (
        cd "${version_dir}"
        {
            find ./ -name "*.aidl" -print0 | LC_ALL=C sort -z | xargs -0 sha1sum
            echo "${previous}"
        } | sha1sum | cut -d ' ' -f 1
    )
}

check_hash() {
    local version="$1" previous="$2"
    local version_dir="${api_dir}/${version}"
    if [[ ! -d "${version_dir}" ]]; then
        fail "version ${version}: directory ${version_dir} is missing"
        return
    fi
    if [[ ! -f "${version_dir}/.hash" ]]; then
        fail "version ${version}: ${version_dir}/.hash is missing"
        return
    fi
    local expected actual
    expected="$(compute_hash "${version_dir}" "${previous}")"
    actual="$(cat "${version_dir}/.hash")"
    if [[ "${actual}" != "${expected}" ]]; then
        fail "version ${version}: .hash is '${actual}' but the dump hashes to '${expected}'"
    fi
}

list_aidl() {
    (cd "$1" && find . -name '*.aidl' | sed 's|^\./||' | LC_ALL=C sort)
}

check_latest_matches_sources() {
    local frozen_dir="${api_dir}/${latest_version}/${pkg_path}"
    if [[ ! -d "${frozen_dir}" ]]; then
        fail "version ${latest_version}: ${frozen_dir} is missing"
        return
    fi

    local name
    while read -r name; do
        fail "${src_dir}/${name} has no frozen copy in version ${latest_version}"
    done < <(LC_ALL=C comm -23 <(list_aidl "${src_dir}") <(list_aidl "${frozen_dir}"))
    while read -r name; do
        fail "${frozen_dir}/${name} has no source file in ${src_dir}"
    done < <(LC_ALL=C comm -13 <(list_aidl "${src_dir}") <(list_aidl "${frozen_dir}"))

    while read -r name; do
        local frozen="${frozen_dir}/${name}" source="${src_dir}/${name}"
        [[ -f "${source}" ]] || continue
        if ! cmp -s <(head -n "${header_lines}" "${frozen}") <(printf '%s\n' "${dump_header}"); then
            fail "${frozen}: dump header is missing or altered"
            continue
        fi
        if ! cmp -s <(tail -n "+$((header_lines + 1))" "${frozen}") "${source}"; then
            fail "${frozen}: differs from ${source}"
        fi
    done < <(list_aidl "${frozen_dir}")
}

# The host's aidl predates @VintfStability and @Backing enums: give it copies without the
# annotations and without the enum, whose values are compared here instead.
readonly enum_file="${pkg_path}/TaskGroup.aidl"
scratch="$(mktemp -d)"
trap 'rm -rf "${scratch}"' EXIT

prepare() {
    local version="$1"
    cp -r "${api_dir}/${version}" "${scratch}/${version}"
    rm -f "${scratch}/${version}/.hash" "${scratch}/${version}/${enum_file}"
    find "${scratch}/${version}" -name '*.aidl' -exec \
        sed -i -E 's/@VintfStability[[:space:]]*//g; s/@Backing\([^)]*\)[[:space:]]*//g' {} +
}

enum_members() {
    grep -E '^[[:space:]]*[A-Z0-9_]+[[:space:]]*=' "${api_dir}/$1/${enum_file}" | tr -d ' ,' |
        LC_ALL=C sort
}

check_compatible() {
    local old="$1" new="$2"
    [[ -d "${scratch}/${old}" ]] || prepare "${old}"
    [[ -d "${scratch}/${new}" ]] || prepare "${new}"
    # It aborts on some inputs it cannot parse: any non-zero status is a failure.
    if ! aidl --checkapi "${scratch}/${old}" "${scratch}/${new}"; then
        fail "version ${new} is not a compatible extension of version ${old}"
    fi
    local member
    while read -r member; do
        fail "version ${new}: enum member ${member} of version ${old} is missing or changed"
    done < <(LC_ALL=C comm -23 <(enum_members "${old}") <(enum_members "${new}"))
}

check_hash 1 latest-version
check_hash 2 1
check_latest_matches_sources
check_compatible 1 2
check_compatible 2 current

if ((failures > 0)); then
    echo "check-aidl-api: ${failures} problem(s) found"
    exit 1
fi
echo "check-aidl-api: OK"

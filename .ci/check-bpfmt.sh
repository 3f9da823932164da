#!/usr/bin/env bash
# Fails when any tracked Android.bp is not in canonical bpfmt form (or does not
# parse). Run from the repository root.
set -euo pipefail

if ! command -v bpfmt >/dev/null 2>&1; then
    echo "check-bpfmt: FAIL: bpfmt not found (install blueprint-tools)"
    exit 1
fi

failures=0
checked=0
while IFS= read -r -d '' bp; do
    checked=$((checked + 1))
    # bpfmt -d exits 0 even when it prints a diff, so judge by its output too.
    if ! diff_out="$(bpfmt -d "${bp}" 2>&1)"; then
        echo "check-bpfmt: FAIL: ${bp}: bpfmt could not parse it"
        printf '%s\n' "${diff_out}"
        failures=$((failures + 1))
    elif [[ -n "${diff_out}" ]]; then
        echo "check-bpfmt: FAIL: ${bp}: not bpfmt-clean"
        printf '%s\n' "${diff_out}"
        failures=$((failures + 1))
    fi
done < <(git ls-files -z -- '*Android.bp')

if ((failures > 0)); then
    echo "check-bpfmt: ${failures} of ${checked} Android.bp file(s) need fixing"
    exit 1
fi
echo "check-bpfmt: OK (${checked} file(s))"

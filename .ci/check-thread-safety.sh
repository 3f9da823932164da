#!/usr/bin/env bash
# Compiles the service's sources with clang's -Wthread-safety, against libc++ with its
# thread-safety annotations on, as a device build sees std::mutex: every GUARDED_BY and REQUIRES
# is checked. Syntax only; the host build (tools/test.sh) links. Run from the repository root
# after tools/test.sh has configured build/.
set -euo pipefail

commands=build/compile_commands.json
[[ -f "${commands}" ]] || { echo "check-thread-safety: FAIL: ${commands} missing"; exit 1; }

# Each unit of the service and of its memory-statistics engine, with the include directories
# its own compile uses.
mapfile -t units < <(python3 - "${commands}" <<'PY'
import json, os, shlex, sys
for entry in json.load(open(sys.argv[1])):
    source = os.path.relpath(entry["file"])
    if not source.startswith(("performance/", "mm_quilbex/")) or "/aidl/" in source:
        continue
    args = shlex.split(entry["command"])
    # -isystem takes its directory as the next word.
    words = []
    for i, a in enumerate(args):
        if a == "-isystem":
            words += [a, args[i + 1]]
        elif a.startswith(("-I", "-D")):
            words.append(a)
    print(shlex.join(words + [source]))
PY
)

failures=0
for unit in "${units[@]}"; do
    eval "set -- ${unit}"
    if ! clang++ -std=c++17 -stdlib=libc++ -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS \
        -fsyntax-only -Wthread-safety -Wthread-safety-beta -Werror "$@"; then
        failures=$((failures + 1))
    fi
done
echo "check-thread-safety: ${#units[@]} units, ${failures} failing"
((failures == 0))

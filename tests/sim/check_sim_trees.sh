#!/bin/sh
# Consistency check of the simulated device trees: kernel identity, the memory
# cgroup mount, symlinks that stay inside their tree, and identical node sets
# apart from the nodes that really move with the kernel version.
set -u
sim=${1:?usage: check_sim_trees.sh <sim directory>}
fail=0
err() { echo "FAIL: $*" >&2; fail=1; }

# Nodes that exist on one kernel generation only.
only_515='^(proc/vyren_mem/|proc/task_info/task_cpustats/|proc/sys/walt/|proc/waker_identify/|sys/module/damon_reclaim/|proc/vyren_scheduler/sched_assist/(sched_assist_scene|tpd_cmds|tpd_id|ux_task|disable_setting)$)'
only_419='^(proc/vyren_healthinfo/(kmalloc_|vmalloc_|memleak_detect_thread$|va_feature$|process_reclaim_enable$)|proc/process_reclaim$|proc/memory_monitor$|proc/sgeinfo$|proc/sgefreqinfo$|proc/sys/kernel/(task_cpustats_enable|slide_boost_enabled|frame_rate|sched_assist_scene|sched_impt_tgid)$|sys/module/tpd/)'

for ver in 5.15 4.19; do
    tree=$sim/kernel-$ver
    [ -d "$tree" ] || { err "$tree missing"; continue; }
    head -n1 "$tree/proc/version" | grep -Eq "^Linux version ${ver}\.[0-9]+[-+ ]" ||
        err "$tree/proc/version does not start with Linux version $ver.<patch>"
    awk '$2 == "/dev/memcg" && $3 == "cgroup" && $4 ~ /(^|,)memory(,|$)/ { found = 1 }
         END { exit !found }' "$tree/proc/mounts" ||
        err "$tree/proc/mounts has no memory cgroup at /dev/memcg"
    root=$(cd "$tree" && pwd -P)
    find "$tree" -type l | while read -r link; do
        case $(readlink "$link") in /*) echo "FAIL: absolute symlink $link" >&2; exit 1 ;; esac
        target=$(realpath -e "$link" 2>/dev/null) || { echo "FAIL: dangling $link" >&2; exit 1; }
        case $target in "$root"/*) ;; *) echo "FAIL: $link escapes its tree" >&2; exit 1 ;; esac
    done || fail=1
done

list() { (cd "$1" && find . ! -type d | sed 's|^\./||' | sort); }
a=$(list "$sim/kernel-5.15" | grep -Ev "$only_515")
b=$(list "$sim/kernel-4.19" | grep -Ev "$only_419")
# Each list is free of repeats, so a name that appears once is in one tree only.
only=$(printf '%s\n%s\n' "$a" "$b" | sort | uniq -u)
[ -z "$only" ] || err "nodes outside those of one kernel generation, in one tree only:
$only"
[ "$fail" = 0 ] && echo "sim trees consistent"
exit "$fail"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Usage: goals.sh BUILD [ARGUMENT...], as ./dev goals runs it.
# What str_goals prints itself, its instructions as Callgrind counts them, or a plot of its ratios.
set -euo pipefail
readonly here=${BASH_SOURCE[0]%/*} program=$1/bin/str_goals
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A line for each workload and length: the instructions of a call of the library in this build.
count() { # BUILD
    mkdir "$work/counts"
    LD_LIBRARY_PATH=$(realpath "$1")/lib valgrind --quiet --tool=callgrind \
        --callgrind-out-file="$work/counts/out" --toggle-collect=bench_counted_pass \
        --dump-after=bench_counted_pass "$program" --counted >"$work/calls"
    local part=0 name size calls
    while IFS=$'\t' read -r name size calls; do
        part=$((part + 1))
        sed -n "s/^summary: //p" "$work/counts/out.$part" |
            awk -v calls="$calls" '{ printf "%12.0f\n", $1 / calls }'
        printf '%-30s%6s\n' "$name" "$size" >&3
    done <"$work/calls" 3>"$work/names"
    rm -r "$work/counts"
}

instructions() { # BUILD...
    (($#)) || set -- "${program%/bin/*}"
    local build columns=()
    for build; do
        columns+=("$work/column${#columns[@]}")
        count "$build" >"${columns[-1]}"
    done
    echo "instructions a call, by the number of bytes; libraries of: $*"
    paste -d '' "$work/names" "${columns[@]}"
}

# The points of each family to a file of its own, in the order of the families.
plot() { # FILE
    "$program" --points | awk -F '\t' -v work="$work" '
        NF == 2 && $1 !~ /^[0-9]/ {
            if (!($1 in files)) files[$1] = work "/" ++count "-" $1 ".points"
            file = files[$1]
            $0 = "\"" $2 "\""
        }
        { print > file }'
    gnuplot -c "$here/goals.gp" "$1" "$work"/*.points
}

case ${2-} in
    --instructions) instructions "${@:3}" ;;
    --plot) plot "${3:?which file?}" ;;
    *) "$program" "${@:2}" ;;
esac

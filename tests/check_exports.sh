#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_exports.sh LIBRARY_DIR LIST SOURCE_DIR: the libraries define what the sorted list names, or
# services, and nothing else; a host's services come first, however it is compiled and linked.
set -euo pipefail
export LC_ALL=C
libraries=$1 list=$2 source=$3
services='(ccs|er|os|lkf|ext|enc|mdc|cvc|nm|da|t61|dstring)_[A-Za-z0-9_]*|InitTabsDone'

defined() { # LIBRARY
    local dynamic=-D
    [[ $1 != *.a ]] || dynamic=
    nm $dynamic -g --defined-only "$libraries/$1" | awk 'NF == 3 { print $3 }' | sort
}

for kind in a so; do
    diff -u "$list" <(defined "libstr.$kind")
    if defined "libstrservices.$kind" | grep -vxE "$services"; then
        exit 1 # which are no services
    fi
done

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# shellcheck disable=SC2086 # the flags are lists
compile() { # OPTION...
    $CC $CFLAGS "$@" $LDFLAGS
}
modes=('' -flto)
if ! compile -flto -x c - -o "$scratch/empty" <<<'int main(void) { return 0; }' 2>/dev/null; then
    echo 'this compiler cannot link with -flto: hosts with it are left out'
    modes=('')
fi

expected=$(sed '1,/^\/\* prints:$/d; /^ \*\/$/d; s/^ \* //' "$source/examples/host.c")
for mode in "${modes[@]}"; do
    for place in -pie -no-pie; do
        for kind in a so; do
            # shellcheck disable=SC2046,SC2086
            compile -std=c11 -O2 $mode -f${place#-} $place -I"$source/include" -I"$source" \
                "$source/examples/host.c" -o "$scratch/host" \
                "$libraries/libstr.$kind" "$libraries/libstrservices.$kind" \
                -Wl,-rpath,"$libraries" $(pkg-config --libs glib-2.0)
            shown=$("$scratch/host")
            diff -u --label "$mode $place $kind" <(echo "$expected") <(echo "$shown")
        done
    done
done

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# combine.sh MAP strong|weak RESULT LINK... -- OBJECT...: links the objects into one object, RESULT.
# The symbols that the version script MAP exports are global in it, or weak; all others are local.
# LINK is the compiler with the flags that choose the machine.
#
# COMDAT groups become plain sections: a local symbol in a group would be lost with the group when
# the host has a group of the same name. Only the GNU linker can do this.
set -euo pipefail
map=$1 binding=$2 result=$3
shift 3

link=()
while [[ $1 != -- ]]; do
    link+=("$1")
    shift
done
shift

# objcopy understands the patterns of a version script.
options=()
while read -r pattern; do
    options+=(--keep-global-symbol="$pattern")
    [[ $binding == strong ]] || options+=(--weaken-symbol="$pattern")
done < <(sed -n '/global:/,/local:/s/^ *\(.*[^ ]\);$/\1/p' "$map")

"${link[@]}" -fno-sanitize=all -fuse-ld=bfd -nostdlib -r -Wl,--force-group-allocation \
    -o "$result" "$@"
"${OBJCOPY:-objcopy}" --wildcard "${options[@]}" "$result"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_adding_a_set.sh SOURCE_DIR: follows docs/adding-a-character-set.md in a copy of the sources:
# makes its edits, runs its commands, compares what they print.
set -euo pipefail
source=$(realpath "$1") copy=$source/build/adding-a-set

fail() { printf 'adding a set: %s\n' "$@"; exit 1; }

edit() { # FILE LINE: puts standard input after the line
    local at
    at=$(grep -nxF -- "$2" <(sed 's/^ *//' "$1") | cut -d: -f1) || fail "$1: no line '$2'"
    sed -i "$at r /dev/stdin" "$1"
}

run() { # COMMAND OUTPUT
    local shown
    case $1 in
        './dev build') cmake --build --preset release --target strtool toupper_generate str_tests ;;
        './dev test') build/release/bin/str_tests --gtest_brief=1 2>"$copy/log" ;;
        *)
            shown=$(eval "$1" 2>&1) || shown+=" (status $?)"
            [[ $shown == "$2" ]] || fail "$1" "prints: $shown" "not: $2" ;;
    esac
}

rm -rf "$copy" && mkdir -p "$copy"
tar -C "$source" --exclude=./build --exclude=./.git -c . | tar -C "$copy" -x && cd "$copy"
cmake --preset release >/dev/null
mapfile -t page <docs/adding-a-character-set.md
[[ $(grep -c '^```cpp' docs/adding-a-character-set.md) -ge 5 ]] || fail 'the page has no edits'
for ((i = 0; i < ${#page[@]}; i++)); do
    text=
    if [[ ${page[i]} == '```cpp' ]]; then
        # shellcheck disable=SC2016 # they are the page's backquotes
        [[ ${page[i - 2]} =~ ^'In `'([^\`]+)'`, after `'(.+)'`:'$ ]] || fail "line $i: where to?"
        while [[ ${page[++i]} != '```' ]]; do text+=${text:+$'\n'}${page[i]}; done
        edit "${BASH_REMATCH[@]:1}" <<<"$text"
    elif [[ ${page[i]} == '    $ '* ]]; then
        command=${page[i]#*\$ }
        while [[ ${page[i + 1]-} =~ ^'    '[^\$] ]]; do text+=${text:+$'\n'}${page[++i]:4}; done
        run "$command" "$text"
    fi
done

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_exports.sh LIBRARY_DIR LIST: the libraries define what the sorted list names, or services,
# and nothing else. The shared ones need GLib and the C library, and no C++ runtime.
set -euo pipefail
export LC_ALL=C
services='(ccs|er|os|lkf|ext|enc|mdc|cvc|nm|da|t61|dstring)_[A-Za-z0-9_]*|InitTabsDone'
needed='Shared library: \[(libglib-2\.0\.so\.0|libc\.so\.6|libm\.so\.6|ld-linux.*)\]'
cd "$1"

symbols() { nm -g "$@" | awk 'NF > 1 { print $NF }' | sort; } # OPTION... LIBRARY
no() { ! grep "$@" || { echo 'the lines above are wrong'; exit 1; }; }

options=(--defined-only)
for kind in a so; do
    [[ $kind == a ]] || options+=(-D)
    diff -u "$2" <(symbols "${options[@]}" "libstr.$kind")
    symbols "${options[@]}" "libstrservices.$kind" | no -vxE "$services"
done

[[ $CXXFLAGS != *-fsanitize=* ]] || exit 0 # the sanitizers have a runtime
for library in libstr.so libstrservices.so; do
    entries=$(readelf -d "$library" | grep NEEDED) || true
    [[ $entries == *'[libc.so.6]'* ]] || { echo "$library: dependencies not readable"; exit 1; }
    no -vE "$needed" <<<"$entries"
    symbols -D --undefined-only "$library" | grep -vE '^__cxa_(finalize|atexit)@' |
        no -E '^(_Z|__cxa_|__gxx_|_Unwind_)'
done

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_runtime.sh LIBRARY...: each library needs GLib and the C library, and no C++ runtime.
set -euo pipefail

for library in "$@"; do
    needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    grep -qx 'libc\.so\.6' <<<"$needed" || { echo "$library: dependencies not readable"; exit 1; }
    if grep -vxE 'libglib-2\.0\.so\.0|libc\.so\.6|libm\.so\.6|ld-linux.*' <<<"$needed"; then
        echo "$library: needs the libraries above"
        exit 1
    fi
    if nm -D --undefined-only "$library" | awk '{ print $NF }' |
        grep -E '^(_Z|__cxa_|__gxx_|_Unwind_)' | grep -vE '^__cxa_(finalize|atexit)@'; then
        echo "$library: takes the symbols above from a C++ runtime"
        exit 1
    fi
done

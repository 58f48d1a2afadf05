#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_headers.sh SOURCE_DIR: every header that is installed compiles alone, as C11 and as C++20.
set -uo pipefail
cd "$1" || exit 1

warnings=(-Wall -Wextra -pedantic -Werror)
failed=0

compiles_alone() { # HEADER COMMAND...
    printf '#include "%s"\nextern int includes_alone;\n' "$1" |
        "${@:2}" "${warnings[@]}" -fsyntax-only -Iinclude -I. - || { echo "FAILED: $*"; failed=1; }
}

for header in include/str/*.h platform/*.h services/services.h; do
    # shellcheck disable=SC2086 # the flags are lists
    compiles_alone "$header" "$CC" $CFLAGS -std=c11 -x c
    # shellcheck disable=SC2086
    compiles_alone "$header" "$CXX" $CXXFLAGS -std=c++20 -x c++
done
exit "$failed"

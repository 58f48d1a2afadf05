#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_headers.sh SOURCE_DIR: every header that is installed compiles alone, as C11 and as C++20.
# Includes follow tools -> services -> platform <- str -> include.
set -euo pipefail
cd "$1"

for header in include/str/*.h platform/*.h services/services.h; do
    for compiler in "$CC $CFLAGS -std=c11 -x c" "$CXX $CXXFLAGS -std=c++20 -x c++"; do
        # shellcheck disable=SC2086 # words
        printf '#include "%s"\nextern int includes_alone;\n' "$header" |
            $compiler -Wall -Wextra -pedantic -Werror -fsyntax-only -Iinclude -I. -
    done
done

includes() { # FOLDER DIRECTORY...: the lines in the directories that include from the folder
    local line="#[[:space:]]*include[[:space:]]*[\"<]([^\">]*/)?$1/"
    grep -rnE "$line" --include='*.h' --include='*.cc' "${@:2}" || (($? == 1))
}
# Neither the library nor a contract knows the services or the tool.
found=$(includes '(services|tools)' str platform include)
# What is in str/core/ is for the library alone.
found+=$(includes str/core include platform services tools base)
# Exports share by way of str/core/ alone, and it knows none of them.
found+=$(find str -maxdepth 1 -name '*.h')
[[ -z $found ]] || { printf 'against the direction of dependencies:\n%s\n' "$found"; exit 1; }

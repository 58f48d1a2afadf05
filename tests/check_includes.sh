#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_includes.sh SOURCE_DIR: includes follow tools -> services -> platform <- str -> include.
set -euo pipefail
cd "$1"

violations() {
    # Neither the library nor a contract knows the services or the tool.
    grep -rnE '#[[:space:]]*include[[:space:]]*["<]([^">]*/)?(services|tools)/' \
        --include='*.h' --include='*.cc' str platform include || true
    # What stands in str/core/ is for the library alone.
    grep -rnE '#[[:space:]]*include[[:space:]]*["<]([^">]*/)?str/core/' \
        --include='*.h' --include='*.cc' include platform services tools base || true
    # Exports share by way of str/core/ alone, and it knows none of them.
    find str -maxdepth 1 -name '*.h'
}

found=$(violations)
[[ -z $found ]] || { printf 'against the direction of dependencies:\n%s\n' "$found"; exit 1; }

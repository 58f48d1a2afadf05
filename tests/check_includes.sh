#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_includes.sh SOURCE_DIR: includes follow tools -> services -> platform <- str -> include.
set -euo pipefail
cd "$1"

violations() {
    # Neither the library nor a contract knows the services or the tool.
    grep -rnE '#[[:space:]]*include[[:space:]]*["<]([^">]*/)?(services|tools)/' \
        --include='*.h' --include='*.cc' str platform include || true
    # What stands in str/ is for str/ alone.
    local header name
    for header in str/*.h; do
        name=${header#str/}
        [[ ! -e include/str/$name ]] || continue
        grep -rnE "#[[:space:]]*include[[:space:]]*[\"<]([^\">]*/)?str/${name//./\\.}[\">]" \
            --include='*.h' --include='*.cc' include platform services tools || true
    done
}

found=$(violations)
[[ -z $found ]] || { printf 'against the direction of dependencies:\n%s\n' "$found"; exit 1; }

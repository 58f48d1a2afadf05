#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# casetable_word_size.sh PEER [OTHER]: the two programs, the same but for the word size, read each
# other's compiled files and attach each other's images.
set -euo pipefail

[[ -n ${2-} ]] || {
    echo '**** SKIPPED: no program of the other word size: the compiler cannot link one here ****'
    exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $*"
    exit 1
}

size_of() { # PROGRAM: 1 for 32 bits, 2 for 64
    od -An -tu1 -j4 -N1 "$1" | tr -d ' '
}
(($(size_of "$1") != $(size_of "$2"))) || fail 'both programs have one word size'

# One-to-one rules alone; one expansion and one lead byte; lists that all grow more than once.
sources() { # HOME
    mkdir -p "$1"/{toupper,sys}
    echo 'TOUPPER CHARSET IA5
          61=41 62=42' >"$1/toupper/6.s"
    echo 'T C latin1
          61=41 DF->5353 C161=C141 C162=42' >"$1/toupper/100.s"
    echo 'T C many' >"$1/toupper/87.s"
    for lead in {2..5}{0..9}; do
        echo "A${lead:1}${lead:0:1}=B0B0"
        for trail in {30..75}; do echo "$lead$trail = $trail$lead"; done
    done >>"$1/toupper/87.s"
}
readonly sets=(6 100 87)

readonly a=$work/a b=$work/b
for side in "$a $1" "$b $2"; do
    read -r home program <<<"$side"
    sources "$home"
    "$program" digest "$home" "${sets[@]}" >"$home/compiled"
    rm "$home"/toupper/*.s # from here on they can only load
done
cmp "$a/compiled" "$b/compiled"
grep -q '^100 .*DF5353C100000000000000140000000200000061C141624200$' "$a/compiled" ||
    fail 'the lists of 100 are not what its source says'

for home in "$a" "$b"; do
    for program in "$1" "$2"; do
        "$program" digest "$home" "${sets[@]}" | cmp - "$a/compiled"
    done
done
diff -r "$a/toupper" "$b/toupper" || fail 'the files differ'

for home in "$a" "$b"; do
    sources "$home" # a set is published when it has a source
    for writer in "$1" "$2"; do
        "$writer" publish "$home" "$work/segment"
        for reader in "$1" "$2"; do
            "$reader" attach "$work/segment" "${sets[@]}" | cmp - "$a/compiled"
        done
    done
done

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A short tour of strtool on the sample texts. STRTOOL is the program; ./dev demo sets it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
strtool() { command "${STRTOOL:-strtool}" "$@"; }
export LC_ALL=C # bytes are bytes here

bold='' dim='' normal=''
if [[ -t 1 && -z ${NO_COLOR-} ]]; then
    bold=$'\e[1m' dim=$'\e[2m' normal=$'\e[0m'
fi
step() { # CAPTION [COMMAND]
    printf '\n%s%s%s\n' "$bold" "$1" "$normal"
    [[ -z ${2-} ]] || printf '%s$ %s%s\n' "$dim" "$2" "$normal"
}
inspect() { # CAPTION SET COMMAND: what the command says of the set's texts
    step "$1" "$3 | strtool inspect --charset $2"
    eval "$3" | strtool inspect --charset "$2"
}

line() { sed -n "$2p" "$1.txt"; }            # SET NUMBER: that line of the set's file
in_utf8() { iconv -f "$1" -t UTF-8; }        # ICONV-NAME: for the terminal
columns() { strtool width --charset "$1"; }  # SET: of the text on standard input
bytes() { tr -d '\n' | wc -c; }

# The rows of the listing: set, its name for iconv, line of its file.
readonly rows="iso-8859-1 ISO-8859-1 1
t.61 T.61-8BIT 2
iso-8859-5 ISO-8859-5 2
iso-8859-7 ISO-8859-7 1
euc-jp EUC-JP 1
utf8 UTF-8 1"

blanks() { printf '%*s' "$(($1 > 0 ? $1 : 0))" ''; }

# A cell as wide as the measure says that the text is. MEASURE is columns or bytes.
cell() { # MEASURE SET ICONV-NAME WIDTH TEXT
    local size
    case $1 in
        columns) size=$(columns "$2" <<<"$5") ;;
        bytes) size=$(bytes <<<"$5") ;;
    esac
    in_utf8 "$3" <<<"$5" | tr -d '\n'
    blanks $(($4 - size))
}

rule() { # LEFT MIDDLE RIGHT WIDTH WIDTH
    printf '  %s%s%s%s%s\n' "$1" "$(dashes "$4")" "$2" "$(dashes "$5")" "$3"
}
dashes() { blanks "$1" | sed 's/ /─/g'; }

listing() { # MEASURE
    local set iconv_name number text name place
    rule ┌ ┬ ┐ 24 18
    while read -r set iconv_name number; do
        text=$(line "$set" "$number")
        name=${text%%, *} place=${text##*, }
        printf '  │ %s │ %s │  %s\n' "$(cell "$1" "$set" "$iconv_name" 22 "$name")" \
            "$(cell "$1" "$set" "$iconv_name" 16 "$place")" "$set"
    done <<<"$rows"
    rule └ ┴ ┘ 24 18
}

# Two paragraphs, wrapped, next to each other.
readonly wrapped_width=34
wrapped() { # SET NUMBER
    line "$1" "$2" | strtool split --columns "$wrapped_width" --all --charset "$1"
}
side_by_side() {
    local left right i
    mapfile -t left < <(wrapped t.61 5)
    mapfile -t right < <(wrapped iso-8859-5 5)
    rule ┌ ┬ ┐ 36 36
    for ((i = 0; i < ${#left[@]} || i < ${#right[@]}; ++i)); do
        printf '  │ %s │ %s │\n' \
            "$(cell columns t.61 T.61-8BIT "$wrapped_width" "${left[i]-}")" \
            "$(cell columns iso-8859-5 ISO-8859-5 "$wrapped_width" "${right[i]-}")"
    done
    rule └ ┴ ┘ 36 36
}

sizes() { # SET ICONV-NAME NUMBER
    local text
    text=$(line "$1" "$3")
    printf '  %5d  %7d   %s\n' "$(bytes <<<"$text")" "$(columns "$1" <<<"$text")" \
        "$(in_utf8 "$2" <<<"$text")"
}

inspect 'A mail subject in ISO-2022-JP: runs of two sets, and the escape sequences between them' \
    iso-2022-jp "sed -n 4p iso-2022-jp.txt"

inspect 'A name in T.61, whose marks stand before their letters, and the same name in Cyrillic' \
    t.61 "sed -n 6p t.61.txt"

inspect 'A text that was cut in the middle of a character: what is left of it is raw' \
    euc-jp "sed -n 2p euc-jp.txt | head -c 3"

step 'Bytes are not columns: strtool width counts a column for every character'
printf '  bytes  columns\n'
sizes iso-2022-jp ISO-2022-JP 2
sizes iso-2022-kr ISO-2022-KR 2
sizes t.61 T.61-8BIT 3
sizes utf8 UTF-8 2

inspect 'A subject split in Japanese: the second part begins with the escapes that it needs' \
    iso-2022-jp "sed -n 1p iso-2022-jp.txt | strtool split --columns 13 --charset iso-2022-jp"

step 'Paragraphs in T.61 and in ISO 8859-5, wrapped at 34 columns by strtool split' \
    "sed -n 5p t.61.txt | strtool split --columns $wrapped_width --all --charset t.61"
side_by_side

step 'A directory in six character sets, each row as its file has it, padded by bytes'
listing bytes
step 'The same rows, padded by what strtool width says'
listing columns

step 'The texts of a file that match a pattern written in UTF-8: escape sequences do not count' \
    "strtool match --charset iso-2022-jp --utf8-pattern --utf8-out --wildcard '*' '*お知らせ*'"
strtool match --charset iso-2022-jp --utf8-pattern --utf8-out --wildcard '*' '*お知らせ*' \
    <iso-2022-jp.txt

inspect 'A format in Japanese, and what it prints: behind the string its own set is back' \
    iso-2022-jp "strtool printf --charset iso-2022-jp --utf8-in '件名: %s (%d)' 会議 3"

step 'A case table: the source for ISO 8859-1, compiled, and what the file then holds' \
    'strtool casetable compile 100.s && strtool casetable dump 100.b'
tables=$(mktemp -d)
trap 'rm -rf "$tables"' EXIT
cp ../toupper/100.s "$tables"
(cd "$tables" && strtool casetable compile 100.s && strtool casetable dump 100.b)

strtool init-home --from ../toupper "$tables/home" >"$tables/log"
export STR_HOME=$tables/home
step 'Upper case by such tables: each part of a text takes that of its set' \
    "sed -n 6p t.61.txt | strtool upper --charset t.61 --utf8-out"
upper() { line "$1" "$2" | strtool upper --charset "$1" --utf8-out; } # SET NUMBER
upper t.61 6
upper iso-2022-jp 3
upper iso-8859-7 1

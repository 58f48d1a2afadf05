#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# shellcheck disable=SC1003,SC2016 # backslashes and dollar signs mean themselves
# check_strtool.sh STRTOOL SAMPLES: what strtool prints and how it ends, at the boundary.
set -uo pipefail
strtool=$1 samples=$2
failures=0

fail() {
    printf '%s\n' "$@"
    failures=$((failures + 1))
}

# Runs strtool with the arguments; its exit code and all that it prints, errors included, must be as
# said: `row` the very text, `like` a pattern. Standard input is `input`, as printf writes it.
input=
run() { # ARGUMENT...
    # shellcheck disable=SC2059 # for its escapes
    shown=$(printf "$input" | timeout 20 "$strtool" "$@" 2>&1)
    shown_status=$?
}
row() { # STATUS PRINTED ARGUMENT...
    run "${@:3}"
    [[ $shown_status == "$1" && $shown == "$2" ]] || differs "$@"
}
like() { # STATUS PATTERN ARGUMENT...
    run "${@:3}"
    # shellcheck disable=SC2053 # a pattern
    [[ $shown_status == "$1" && $shown == $2 ]] || differs "$@"
}
differs() { fail "strtool ${*:3}" "expected [$1]:" "$2" "shown [$shown_status]:" "$shown"; }

# ---- The command line
like 0 'strtool [0-9]*.[0-9]*' --version
like 0 '*inspect*' --help
for family in '' casetable; do like 2 "strtool: 'nosuch'*" $family nosuch a; done
like 2 'strtool: *' inspect --color=blue a
like 2 "strtool: *'klingon'*strtool sets*" width --charset klingon a
for bad in '\q' '\x4' '\xg0' 'end\'; do like 2 'strtool: *backslash*' width good "$bad"; done
"$strtool" sets >/dev/full 2>/dev/null
[[ $? == 1 ]] || fail 'a full device must give 1'
for verb in width 'split --all --columns 1' 'find a' upper transform inspect; do
    # shellcheck disable=SC2086 # words
    message=$(yes | timeout 10 "$strtool" $verb 2>&1 >/dev/full)
    [[ $? == 1 && $message == 'strtool: standard output: '* ]] || fail "$verb goes on: $message"
done
"$strtool" cmp a a >/dev/full 2>&1
[[ $? == 2 ]] || fail 'cmp cannot tell on a full device'
like 0 '*JIS X 0208 * 87 * 2 *Japanese*' sets
like 0 '*87*ESC $ B*case*x0208*' sets x0208
like 0 '*C1*iconv -f sjis -t UTF-8' sets --why sjis
like 0 'It is not*iconv -f CP737 *' sets --why CP737
like 0 '*ISO-8859-4' sets --why latin4
like 0 'Neither*' sets --why klingon
"$strtool" sets | awk 'length > 80 { exit 1 }' || fail 'a line of the sets is too long'
"$strtool" sets --markdown | diff - "$samples/../../docs/character-sets.md" ||
    fail 'docs/character-sets.md is old'

# ---- width
row 0 $'2\n3\n0\n2' width ab '\e\n\t' '' '\x41\\'
row 0 $'5\n5\n2\n3\n4' width -- '[a,b]' width '{}' '-x-' '%%%%'
row 0 4 width --charset ISO-2022-JP --utf8-in $'AあいB'
like 1 $'1\nstrtool: text 2: *é*ISO-8859-5*' width --charset ISO-8859-5 --utf8-in a $'xé'
like 1 'strtool: text 1: byte 2 *' width --utf8-in 'a\xFF'
like 1 'strtool: text 1: *JIS X 0208' width --charset 'JIS X 0208' --utf8-in a
input='ab\n\nlong\\e\r'
row 0 $'2\n0\n7' width
input='ab\0cd\nx'
row 1 $'strtool: line 1: byte 3 is NUL, which a text cannot have\n1' width --charset ia5
input=

# ---- inspect: text, escapes and raw bytes, what can be decoded
row 0 'offset  kind    bytes  columns  data  text
        total       0        0  0 segments of UTF8' inspect ''
row 0 $'offset  kind        bytes  columns  data  text
     0  IA5             1        1  A     A
     1  escape          3        0  \\e$B
     4  JIS X 0208      4        2  $"$$  あい
     8  escape          3        0  \\e(B
    11  IA5             2        2  B\\\\   B\\
        total          13        5  5 segments of ISO-2022-JP' \
    inspect --charset iso-2022-jp 'A\e$B$"$$\e(BB\\'
like 0 '* 1  raw * 1 * 1  \\xC2'$'\n*' inspect --charset t.61 'e\xC2'
like 0 $'* JIS X 0212 * 丂\n*' inspect --charset EUC-JP '\x8F\xB0\xA1'
like 0 $'*\e[[]2m\\\\e(B\e[[]0m*' inspect --color always --charset t.61 '\e(B'

# ---- truncate, split, cat, find
jp=(--charset iso-2022-jp) text='A\e$B$"$$\e(BB'
row 0 $'A\e$B$"' truncate "${jp[@]}" --bytes 7 "$text"
row 0 $'A\e$B$"\e(B' truncate "${jp[@]}" --bytes 9 --close "$text"
row 0 $'A\e$B$"$$\e(BB' truncate "${jp[@]}" --bytes 2147483647 "$text"
row 0 $'Aあ\nB' truncate "${jp[@]}" --bytes 7 --utf8-out "$text" B
row 0 $'aé\n\xE4' truncate --bytes 5 $'aé世' '\xE4'
like 1 $'strtool: text 1: *byte 2 *raw*\nb' truncate --bytes 9 --utf8-out 'a\xE4' b
for bad in -1 08x '[1]' 2147483648; do like 2 'strtool: *--bytes*' truncate --bytes "$bad" a; done
row 0 $'Aあ\nいB' split "${jp[@]}" --bytes 4 --utf8-out "$text"
row 0 $'\nab\nab\ncde' split --columns 2 '' ab abcde
row 0 $'A\nあ\nい\nx' split "${jp[@]}" --all --columns 1 --utf8-out 'A\e$B$"$$\e(B' x
# shellcheck disable=SC2086 # words
for bad in '' '--columns 1 --bytes 1'; do like 2 'strtool: split takes *' split $bad a; done
row 0 $'A\e$B$"\e(BB' cat "${jp[@]}" 'A\e$B$"' B
row 0 'aя[x,y]' cat --charset iso-8859-5 --utf8-in --utf8-out a я '[x,y]'
row 1 $'9\n-\n1' find "${jp[@]}" '$' '\e$B$"\e(Ba$' '\e$B$"\e(B' 'a$'
row 0 $'1\n0' find '[' 'a[b' '[,]'
for bad in '' ab é; do like 2 'strtool: *not one byte*' find "$bad" a; done

# ---- match, transform
input='A\e$B$"$$\e(BB\nA*B\n'
row 0 $'A\e$B$"$$\e(BB\nA*B' match "${jp[@]}" --wildcard '*' 'A*B'
row 0 $'AあいB' match "${jp[@]}" --utf8-pattern --utf8-out '\x1Fあ\x1F'
input='お\nあお\nあ\n' # 0x242A, whose last byte is that of *, and 0x2422
for set in iso-2022-jp euc-jp; do
    utf8=(--charset "$set" --utf8-in --utf8-out --wildcard '*')
    row 0 $'お\nあお' match "${utf8[@]}" '*お'
    row 0 あお match "${utf8[@]}" 'あ*お'
    row 1 '' match "${utf8[@]}" 'い*'
done
input=
row 0 é match --charset iso-8859-1 --utf8-in --utf8-out '\x1Fé' é e
like 2 'strtool: PATTERN: *é*IA5*' match --charset ia5 --utf8-pattern é a
row 0 $'a&lt;e\eAc' transform --replace '<=&lt;' --replace é=e --escape ^ --drop '~' 'a<é^1~bc'
row 0 $'(a<b)=x[y' transform --prefix --replace '<=[' '(a<b)=x<y' ''
row 0 $'y=z\n\t]' transform --replace '[=]' --replace 'x=y=z' 'x\n\t['
like 1 $'strtool: text 1: byte 2 *\nb' transform 'a\xFF' b
for bad in '' '<' =x '\xFF=a'; do like 2 'strtool: --replace: *' transform --replace "$bad" a; done

for bad in 'width a\x00b' 'find \x00 a' 'match a\x00b a' 'transform --drop a\x00b a' \
    'printf a\x00b'; do
    # shellcheck disable=SC2086 # words
    like 1 'strtool: *byte [12] is NUL*' $bad
done

# ---- printf
row 0 'abc -7 0.50 |ffff|99 100%%' printf -- '%2$s %1$d %4$.2f |%3$hx|%5$ld 100%%' -7 abc -1 .5 99
row 0 '件名: 会議 (3)' printf "${jp[@]}" --utf8-in --utf8-out '件名: %s (%d)' 会議 3
row 0 $'[\e$B$"\e(B]' printf "${jp[@]}" '[%s]' '\e$B$"'
row 0 '[1,2]  4294967295' printf '%s%*u' '[1,2]' 12 4294967295
like 1 '%b$d?strtool: *printed as it is' printf '%b$d'
for bad in '' x 1x 2147483648000 ' '; do like 2 "strtool: '$bad' is not *" printf %d "$bad"; done
like 2 'strtool: * takes 2 arguments, and 1 are given*' printf '%d%s' 1
like 2 'strtool: *FORMAT*' printf

# ---- casetable, init-home: what is wrong is said of file and line, what is there already stays
home=$(mktemp -d) sources=$(realpath "$samples/../toupper")
trap 'rm -rf "$home"' EXIT
row 1 "strtool: $home/toupper: No such file or directory: see --from" \
    init-home --from "$home/toupper" "$home/a"
like 0 "made $home/a"$'\nmade *\nwrote *'"100.s"$'\n*\nexport STR_HOME='"'$home/a'" \
    init-home --from "$sources" "$home/a/"
[[ $(stat -c %a "$home"/a{,/sys,/toupper} | uniq) == 2775 ]] || fail 'init-home: the modes'
diff -r "$home/a/toupper" "$sources" | grep -v '^Only in' && fail 'init-home: the sources'
row 0 "export STR_HOME='$home/a'" init-home --from "$sources" "$home/a"
echo >>"$home/a/toupper/6.s"
like 1 "*strtool: $home/a/toupper/6.s: *"$'\ncompiled *92.b\nexport *' \
    init-home --from "$sources" --compile "$home/a"

# ---- upper: by the tables of a home, which it names where they are not
export STR_HOME=$home/a
row 0 $'A\e$B#A\e(B\\' upper "${jp[@]}" 'a\e$B#a\e(B\\'
row 0 $'\xC2E\n\xE9' upper --charset t.61 '\xC2e' '\xF9'
row 0 'É ß' upper --charset iso-8859-1 --utf8-in --utf8-out 'é ß'
{ yes a | head -n 50000; mv "$home"/{a,b}; echo a; } | "$strtool" upper --charset ia5 &>/dev/null ||
    fail 'upper: a table is looked up more than once'
mv "$home"/{b,a}
STR_HOME=$home/none
row 1 $'STRASSE É\nstrtool: text 2: this is not well-formed UTF-8' upper 'straße é' '\xE9'
like 1 $'strtool: text 1: *JIS X 0208*'"$home/none"$'*init-home*STR_HOME*' \
    upper --charset 'JIS X 0208' '#a'

# ---- cmp, cmp-names: 2 where there is nothing to compare with
like 2 "strtool: text 1: there is no case table for IA5 in the service home $home/none: *" \
    cmp --ignore-case --charset2 utf8 --charset ia5 a a
like 2 'strtool: there is no case table for IA5*' cmp-names 'S=a' 'S=b' --attributes S
STR_HOME=$home/a
row 1 '!=' cmp "${jp[@]}" --utf8-in あ あい
row 1 '<' cmp "${jp[@]}" --utf8-in --order あ あい
row 0 = cmp --ignore-case --charset t.61 --charset2 iso-8859-1 'stra\e(Bsse' STRASSE
row 0 = cmp --ignore-case --order "${jp[@]}" --utf8-in Ａａz ａＡZ
like 2 'strtool: text 2: *é*' cmp --utf8-in --charset ia5 e é
printf 'a\nB\n' >"$home/lines1"
printf 'A\nb\nc\n' >"$home/lines2"
row 1 $'=\n=\n<' cmp --lines --ignore-case --order --charset ia5 "$home"/lines{1,2}
row 2 "strtool: $home: Is a directory"$'\n'"strtool: $home/lines3: No such file or directory" \
    cmp --lines "$home"{,/lines3}
row 1 '>' cmp-names '/C=GB/S=b/' '/C=GB/S=a/' --attributes C,S
row 0 = cmp-names 'S=a; S=\xE1' 'S=b; S=\xE1' --any-charset --attributes S
unset STR_HOME

cd "$home" && export TMPDIR=$home || exit 1
printf 'T C latin1\na=A \\xDF=SS \\xE9 -> \\xC9\nb=B bc=DE bx=bx\n' >1.s
printf '#%-179d\nT C x\na=A  # note\n' 0 >2.s # its first line is read in three pieces
printf '\n' >3.s
printf 'T C x\na=A\0b\n' >5.s
long=$(printf '%0250d' 0) && long=$PWD/$long/$long/$long/$long/$long # more than a line of the log
mkdir -p "$long" && cp 2.s "$long"
ln -s /dev/null null
(umask 77 && "$strtool" casetable compile 1.s -o mine.b)
[[ $(stat -c %a mine.b) == 600 ]] || fail 'casetable compile: not as the umask has it'
row 0 '' casetable compile 1.s -o null
[[ -c null && -L null ]] || fail 'casetable compile: a device was replaced'
row 0 '' casetable compile 1.s
row 0 '1.b: 445 bytes
  version 11
  name LATIN1
  byte map: 2 bytes change
    a to A
    \xE9 to \xC9
    b \xDF by rules
  expansions: 1, room for 20
    \xDF to SS
  lead bytes: 1, room for 20
    b: 2, room for 20
      c to DE
    pairs that stay as they are: 1' casetable dump 1.b
dumped=$shown
row 1 "strtool: $long/2.s:3: the rule has no operator
strtool: 3.s:1: the case table source has no header
strtool: 5.s:2: there is a NUL in the line" casetable compile -d a 1.s "$long/2.s" 3.s 5.s
row 0 "a/$dumped" casetable dump a/1.b
head -c 444 1.b >cut.b
{ head -c 8 1.b; printf '\1'; tail -c +10 1.b | tr b c; echo; } >odd.b
row 1 'strtool: cut.b: the compiled case table ends too early
strtool: odd.b: this is not a compiled case table of this version
strtool: Failed to open file “4.b”: No such file or directory' \
    casetable check 1.s 1.b cut.b odd.b 4.b
like 1 $'*\n  odd: cut short: the trails of b, 5 of 6 bytes' casetable dump cut.b
like 1 '*
  odd: reserved bytes of the header are not 0
  odd: *b*c*' casetable dump odd.b
{ head -c 144 1.b; printf '\377\377\377\177\126\125\125\125'; tail -c +153 1.b; } >many.b
like 1 '*cut short: the expansions, * of 4294967298 bytes*' casetable dump many.b
like 1 $'2.s: *\n  odd: this is not a compiled case table*' casetable dump 2.s
like 2 'strtool: *' casetable compile 1.s 2.s -o 1.b
[[ -z $(find . -name 'casetable-*') ]] || fail 'casetable: temporary files are left'

# ---- The samples: nothing raw, nothing that cannot be decoded
for file in "$samples"/*.txt; do
    set=$(basename "$file" .txt)
    shown=$("$strtool" inspect --charset "$set" <"$file") || fail "$file: inspect failed"
    ! grep -E ' raw |·' <<<"$shown" || fail "$file: the lines above"
done
STRTOOL=$strtool "$samples/tour.sh" >/dev/null || fail 'the tour stopped'

# ---- Cost grows with the length
long() { yes 'A\e$B$"\e(B' | head -n 150000 | tr -d '\n' | sed 's/\\e/\x1B/g'; }
[[ $(long | timeout 60 "$strtool" inspect --charset iso-2022-jp | tail -n 1) == \
    *" 1350000 "*" 300000  600000 segments "* ]] || fail 'a long text'

((failures == 0)) || { echo "$failures failed"; exit 1; }

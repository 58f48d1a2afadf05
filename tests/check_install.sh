#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_install.sh CMAKE BUILD_DIR SOURCE_DIR: installs the build into a scratch folder. Builds the
# examples against that in several ways, with the shared libraries and then with the archives. Each
# prints what the comment at its end says: so a host's services come first, however it is linked.
# Each holds the code that is quoted from it. The installed case tables are found, also after the
# folder was moved.
set -euo pipefail
unset DESTDIR STR_HOME
cmake=$1 build=$2 source=$3
prefix=$build/installed option=()

fail() {
    printf '%s\n' "$@"
    exit 1
}

rm -rf "$prefix"{,-moved}
"$cmake" --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name libstr.a)")
export PKG_CONFIG_PATH=$libdir/pkgconfig

strtool=$(find "$prefix" -name strtool)
bindir=$(dirname "$strtool")
home=$(dirname "$(find "$prefix" -path '*/share/*' -name toupper)")
[[ -f $home/sys/toupper.lk ]] || fail 'no lock file'
"$strtool" casetable check "$home"/toupper/*.[bs]
[[ $(find "$home" -name '*.s' | wc -l) == $(find "$home" -name '*.b' | wc -l) ]] ||
    fail 'tables that are not compiled'
"$strtool" init-home "$prefix/home" | grep -qxF "export STR_HOME='$prefix/home'"
[[ $(stat -c %a "$prefix/home/sys/toupper.lk") == 666 ]] || fail 'a lock file not for everybody'

quoted() { # EXAMPLE FILE: the code that follows the example's name in the file
    awk -v mark="examples/$1[)]?:\$" '$0 ~ mark { on = 1; next }
        on && sub(/^( \*)?    +/, "") { print; code = 1; next }
        code && /[^ *]/ { exit }' "$2"
}
code() { sed 's|/\*.*\*/||; s/^ *//; s/ *$//; /^$/d' "$@"; } # without comments and indentation
said() { sed '1,/^\/\* prints:$/d; /^ \*\/$/d; s/^ \* //' "$source/examples/$1.c"; } # EXAMPLE

# shellcheck disable=SC2086 # the flags are lists
compile() { $CC $CFLAGS -std=c11 -O2 -Wall -Wextra -pedantic -Werror "$@" $LDFLAGS; } # OPTION...
modes=('-fpie -pie' '-fno-pie -no-pie')
if compile -flto -x c - -o "$prefix/empty" <<<'int main(void) { return 0; }' 2>/dev/null; then
    modes+=("${modes[@]/%/ -flto}")
else
    echo 'this compiler cannot link with -flto: examples with it are left out'
fi
for kind in shared static; do
    [[ $kind == shared ]] || { option=(--static) && rm "$libdir"/lib*.so; }
    for example in "$source"/examples/*.c; do
        name=$(basename "$example" .c)
        for mode in "${modes[@]}"; do
            # shellcheck disable=SC2046,SC2086
            compile $mode "$example" -o "$bindir/$name-$kind" \
                $(pkg-config "${option[@]}" --cflags --libs libstr)
            shown=$(LD_LIBRARY_PATH=$libdir "$bindir/$name-$kind")
            [[ -n $shown && $shown == "$(said "$name")" ]] || fail "$name-$kind $mode: $shown"
        done
        grep -rlE "examples/$name.c[)]?:\$" "$source"/{include,README.md} >"$prefix/quoting" ||
            fail "$example: quoted nowhere"
        while read -r file; do
            quote=$(quoted "$name.c" "$file" | code)
            [[ -n $quote && $(code "$example") == *"$quote"* ]] ||
                fail "$file: what it quotes is not in $name.c:" "$quote"
        done <"$prefix/quoting"
    done
done

# A host that replaces a reader of texts is asked, however it is linked.
symbolic=$prefix/symbolic option=()
mkdir "$symbolic"
# shellcheck disable=SC2046,SC2086
$CC $CFLAGS -shared -Wl,-Bsymbolic -Wl,-soname,libstrservices.so.0 -Wl,--whole-archive \
    "$libdir/libstrservices.a" -Wl,--no-whole-archive $(pkg-config --libs glib-2.0) $LDFLAGS \
    -o "$symbolic/libstrservices.so.0"
for mode in "${modes[@]::2}"; do
    for kind in shared static; do
        [[ $kind == shared ]] && libraries=("$libdir"/lib{str,strservices}.so.0) ||
            libraries=("$libdir"/lib{str,strservices}.a)
        for replaced in NONE FIRST LENGTH FLAGS; do
            [[ $replaced == NONE ]] && columns=2 || columns=3
            # shellcheck disable=SC2046,SC2086
            compile $mode -D$replaced "$source/tests/readers.c" -I"$prefix/include" \
                "${libraries[@]}" $(pkg-config --cflags --libs glib-2.0) -lm -o "$prefix/readers"
            for path in "$libdir" "$symbolic:$libdir"; do
                shown=$(LD_LIBRARY_PATH=$path "$prefix/readers")
                [[ $shown == "$columns" ]] ||
                    fail "readers: $replaced $mode $kind $path: $shown"
            done
        done
    done
done

# A host that loads the libraries late, and often.
# shellcheck disable=SC2086
$CC $CFLAGS "$source/tests/late.c" -I"$prefix/include" $LDFLAGS -ldl -pthread -o "$prefix/late"
shown=$("$prefix/late" "$libdir"/lib{strservices,str}.so.0)
[[ $shown == "50 of 50" ]] || fail "late: $shown"

mv "$prefix" "$prefix-moved"
cd "$prefix-moved/${libdir#"$prefix/"}"
for kind in shared static; do # compares without regard to case, by a table
    shown=$(LD_LIBRARY_PATH=. "$prefix-moved/${bindir#"$prefix/"}"/compare-$kind)
    [[ $shown == "$(said compare)" ]] || fail "compare-$kind: moved, shows:" "$shown"
done

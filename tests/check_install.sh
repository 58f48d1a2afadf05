#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_install.sh CMAKE BUILD_DIR EXAMPLE: installs the build into a scratch folder of its own and
# builds the example against that, as a user would: by pkg-config, with the shared libraries and
# then with the archives alone. The case tables are found where nobody names a home, also after the
# folder was moved.
set -euo pipefail
unset DESTDIR STR_HOME
cmake=$1 build=$2 example=$3
prefix=$build/installed

fail() {
    printf '%s\n' "$@"
    exit 1
}

compile() { # SOURCE PROGRAM PKG-CONFIG-OPTION...
    # shellcheck disable=SC2046,SC2086 # the flags are lists
    $CC $CFLAGS -std=c11 -Wall -Wextra -pedantic -Werror "$1" -o "$2" \
        $LDFLAGS $(pkg-config "${@:3}" --cflags --libs libstr)
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
[[ $(stat -c %a "$prefix/home/sys/toupper.lk") == 666 ]] || fail 'a home without a lock for everybody'

cat >"$prefix/upper.c" <<'END'
#include <platform/ccs.h>
#include <str/str.h>

int main(void)
{
    CSDescriptor cs;
    int length = 0;
    return ccs_GetCSDescriptor("ISO-8859-1", &cs) && *str_ToUpper("a", 1, &length, &cs) == 'A' ? 0 : 1;
}
END
for kind in shared static; do
    option=()
    [[ $kind == shared ]] || { option=(--static) && rm "$libdir"/lib*.so; }
    compile "$prefix/upper.c" "$bindir/upper-$kind" "${option[@]}"
    compile "$example" "$bindir/width-$kind" "${option[@]}"
    shown=$(LD_LIBRARY_PATH=$libdir "$bindir/width-$kind")
    [[ $shown == $'ISO-8859-1 4\nISO-2022-JP 6\nUTF8 5' ]] || fail "$kind: shown:" "$shown"
done
mv "$prefix" "$prefix-moved"
cd "$prefix-moved/${libdir#"$prefix/"}"
for program in 'strtool upper --charset ia5 a' upper-shared upper-static; do
    # shellcheck disable=SC2086 # words
    LD_LIBRARY_PATH=. "$prefix-moved/${bindir#"$prefix/"}"/$program || fail "$program: no case table"
done

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_install.sh CMAKE BUILD_DIR EXAMPLE: installs the build into a scratch folder of its own and
# builds the example against that, as a user would: by pkg-config, with the shared libraries and
# then with the archives alone. The installed service home serves as one, and to make others from.
set -euo pipefail
unset DESTDIR
cmake=$1 build=$2 example=$3
prefix=$build/installed

expected="ISO-8859-1 4
ISO-2022-JP 6
UTF8 5"

run_example() { # PKG-CONFIG-OPTION...
    # shellcheck disable=SC2046,SC2086 # the flags are lists
    $CC $CFLAGS -std=c11 -Wall -Wextra -pedantic -Werror "$example" -o "$prefix/width" \
        $LDFLAGS $(pkg-config "$@" --cflags --libs libstr)
    local shown
    shown=$(LD_LIBRARY_PATH=$libdir "$prefix/width")
    [[ $shown == "$expected" ]] || { printf 'expected:\n%s\nshown:\n%s\n' "$expected" "$shown"; exit 1; }
}

rm -rf "$prefix"
"$cmake" --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name libstr.a)")
export PKG_CONFIG_PATH=$libdir/pkgconfig

strtool=$(find "$prefix" -name strtool)
STR_HOME=$(dirname "$(find "$prefix" -path '*/share/*' -name toupper)")
export STR_HOME
[[ -f $STR_HOME/sys/toupper.lk ]] || { echo 'no lock file'; exit 1; }
"$strtool" casetable check "$STR_HOME"/toupper/*.[bs]
[[ $(find "$STR_HOME" -name '*.s' | wc -l) == $(find "$STR_HOME" -name '*.b' | wc -l) ]] ||
    { echo 'tables that are not compiled'; exit 1; }
"$strtool" init-home "$prefix/home" | grep -qxF "export STR_HOME='$prefix/home'"

run_example
rm "$libdir"/lib*.so*
run_example --static

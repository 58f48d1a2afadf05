#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# check_exports.sh LIBRARY LIST: the library exports exactly the names in the list, which is sorted.
set -euo pipefail
export LC_ALL=C
diff -u "$2" <(nm -D --defined-only "$1" | awk '{ print $NF }' | sort)

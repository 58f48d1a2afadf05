#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# weaken.sh ARCHIVE OBJECT...: makes ARCHIVE of copies of the objects in which every symbol that
# the object defines is weak. References stay strong, so that they still draw members in, which is
# why one `objcopy --weaken` over the archive would not do.
set -euo pipefail
archive=$1
shift

copies=$(mktemp -d "$archive.XXXXXX")
trap 'rm -rf "$copies"' EXIT
mkdir "$copies/members"

number=0
for object in "$@"; do
    number=$((number + 1)) # keeps objects of the same name apart
    "${NM:-nm}" -g --defined-only "$object" | awk 'NF == 3 { print $3 }' >"$copies/symbols"
    "${OBJCOPY:-objcopy}" --weaken-symbols="$copies/symbols" "$object" \
        "$copies/members/$number-$(basename "$object")"
done
rm -f "$archive"
"${AR:-ar}" rcsD "$archive" "$copies"/members/*

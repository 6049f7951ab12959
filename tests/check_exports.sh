#!/usr/bin/env bash
# Compares the export table of the shared library with what the public headers declare.
# usage: check_exports.sh LIBRARY INCLUDE_DIRECTORY
set -euo pipefail
library=$1 include=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# A declaration runs from the export mark to its semicolon; its name stands before the first
# bracket that opens an argument list, or at the end for a variable.
cat "$include"/ostrum/*.h | sed -e 's|/\*.*\*/||' | tr '\n' ' ' | sed -e 's|/\*[^*]*\*\+\([^/*][^*]*\*\+\)*/||g' |
    tr ';' '\n' | grep -o 'OSTRUM_API .*' | grep -v 'define OSTRUM_API' |
    sed -E -e 's/ *\(.*//' -e 's/\[[^]]*\]$//' -e 's/.*[ *]([A-Za-z_0-9]+) *$/\1/' | sort >"$scratch/declared"
nm -D --defined-only "$library" | awk '{ print $3 }' | sed 's/@.*//' | grep -v '^$' | sort >"$scratch/exported"

[ -s "$scratch/declared" ]
[ -z "$(uniq -d "$scratch/declared")" ] || { echo "declared twice:"; uniq -d "$scratch/declared"; exit 1; }
diff -u --label declared "$scratch/declared" --label exported "$scratch/exported"

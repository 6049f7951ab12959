#!/usr/bin/env bash
# Every source shown in the description of the language compiles without a word, and its module is sound.
# usage: check_language.sh LANGUAGE_DOCUMENT EXAMPLES_DIRECTORY TOLL EVALUATE
set -euo pipefail
document=$1 examples=$2 toll=$3 evaluate=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# One file for each block, named after its module.
awk -v folder="$scratch" '
    /^```toll$/ { inside = 1; next }
    /^```$/ { inside = 0; file = ""; next }
    inside && $1 == "MODULE" { file = folder "/" $2 ".tl" }
    inside { print > file }' "$document"

count=0
for source in "$scratch"/*.tl; do
    module=${source%.tl}.kob
    "$toll" -I "$examples" -o "$module" "$source" >"$scratch/said" 2>&1 ||
        { cat "$scratch/said"; echo "does not compile: $(basename "$source")"; exit 1; }
    [ ! -s "$scratch/said" ] || { cat "$scratch/said"; echo "speaks: $(basename "$source")"; exit 1; }
    "$evaluate" "$module"
    count=$((count + 1))
done
[ "$count" -ge 15 ]

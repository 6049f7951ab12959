#!/usr/bin/env bash
# Every example compiles without a word, and its module is sound and can be listed.
# usage: check_examples.sh EXAMPLES_DIRECTORY TOLL PKOB EVALUATE
set -euo pipefail
examples=$1 toll=$2 pkob=$3 evaluate=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

count=0
for source in "$examples"/*.tl; do
    module=$scratch/$(basename "$source" .tl).kob
    for options in "" "-g -l -b --private-symbols" "-D WORKSHOP"; do
        # shellcheck disable=SC2086  # the options are words
        "$toll" $options -I "$examples" -o "$module" "$source" >"$scratch/said" 2>&1 ||
            { cat "$scratch/said"; echo "does not compile: $source"; exit 1; }
        [ ! -s "$scratch/said" ] || { cat "$scratch/said"; echo "speaks: $source"; exit 1; }
        "$pkob" -c "$module" >"$scratch/listing"
        [ -s "$scratch/listing" ]
        "$evaluate" "$module"
    done
    count=$((count + 1))
done
[ "$count" -ge 8 ]

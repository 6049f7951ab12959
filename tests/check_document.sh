#!/usr/bin/env bash
# Every source shown in a document compiles without a word, and its module is sound. What the document
# shows of these modules, text and pictures, is what pkob makes of them.
# usage: check_document.sh [--update] DOCUMENT LEAST_SOURCES EXAMPLES_DIRECTORY TOLL EVALUATE PKOB
set -euo pipefail
update=
[ "$1" != --update ] || { update=yes; shift; }
document=$1 least=$2 examples=$3 toll=$4 evaluate=$5 pkob=$6
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
[ "$count" -ge "$least" ]

# The document as it should be: behind each command what it prints, without a blank end.
awk -v folder="$scratch" -v pkob="$pkob" '
    /^```console$/ { inside = 1 }
    /^```$/ { inside = 0 }
    !inside || /^```console$/ { print; next }
    /^\$ pkob / {
        print
        command = "cd \"" folder "\" && \"" pkob "\" " substr($0, 8)
        blank = ""
        while ((command | getline line) > 0) {
            if (line != "") { printf "%s%s\n", blank, line; blank = "" }
            else blank = blank "\n"
        }
        close(command)
    }' "$document" >"$scratch/document"
[ -z "$update" ] || cat "$scratch/document" >"$document"
diff "$document" "$scratch/document"

pictures=$(grep -o '](pictures/[^)]*)' "$document" | sed 's/^](pictures\///; s/)$//') || exit 0
"$pkob" --svg="$scratch/pictures" "$scratch"/*.kob
for picture in $pictures; do
    [ -z "$update" ] || cp "$scratch/pictures/$picture" "$(dirname "$document")/pictures/"
    cmp "$scratch/pictures/$picture" "$(dirname "$document")/pictures/$picture"
done

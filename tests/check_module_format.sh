#!/usr/bin/env bash
# The description of the module format shows a file byte by byte: the compiler writes that file.
# usage: check_module_format.sh DOCUMENT TOLL
set -euo pipefail
document=$1 toll=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

awk '/^## One file/ { inside = 1 } inside && /^    MODULE/ { shown = 1 } shown && /^[^ ]/ { exit } shown' \
    "$document" | sed 's/^    //' >lamp.tl
SOURCE_DATE_EPOCH=1000000000 "$toll" -g lamp.tl

# One word a byte: "--" for any, as the document has them.
awk '/^ +[0-9]+  [0-9a-f-]/ {
    words = split(substr($0, 10, 48), word, " ")
    for (i = 1; i <= words; i++) {
        count = word[i] ~ /\*/ ? substr(word[i], 4) : 1
        for (; count > 0; count--) print substr(word[i], 1, 2)
    }
}' "$document" >told
od -A n -v -t x1 -w1 lamp.kob | tr -d ' ' >made
paste -d ' ' told made | awk '$1 != "--" && $1 != $2 { print "at " NR - 1 ": told " $1 ", made " $2; bad = 1 } END { exit bad }'
[ "$(wc -l <told)" -eq "$(wc -l <made)" ]

#!/usr/bin/env bash
# Compiles each source of the golden directory and compares what toll says, what pkob shows of the
# module and its C and Java texts with the files beside it; --update writes those files anew.
# The module of each is sound by EVALUATE's verification.
# usage: check_golden.sh [--update] GOLDEN_DIRECTORY TOLL PKOB [NAME [EVALUATE]]
# First line of a source may be "; options: ..." for toll, as a comment on its MODULE statement.
set -euo pipefail
update=
[ "$1" = --update ] && { update=1; shift; }
golden=$1 toll=$2 pkob=$3 only=${4:-} evaluate=${5:-}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export SOURCE_DATE_EPOCH=951868800 TZ=UTC

failed=0
compare() {
    if [ -n "$update" ]; then cp "$1" "$2"; return; fi
    [ -e "$2" ] || : >"$scratch/none"
    diff -u --label "expected: $2" "$([ -e "$2" ] && echo "$2" || echo "$scratch/none")" --label got "$1" || failed=1
}
cd "$golden"
for source in *.tl; do
    name=${source%.tl}
    [ -z "$only" ] || [ "$only" = "$name" ] || continue
    options=$(sed -n '1s/.*; options: //p' "$source")
    rm -f "$scratch/$name.kob"
    # shellcheck disable=SC2086  # the options are words
    status=0
    "$toll" $options -o "$scratch/$name.kob" "$source" >"$scratch/out" 2>"$scratch/err" || status=$?
    { cat "$scratch/out" "$scratch/err"; echo "status $status"; } >"$scratch/said"
    compare "$scratch/said" "$name.said"
    if [ -e "$scratch/$name.kob" ]; then
        (cd "$scratch" && "$pkob" --all "$name.kob") >"$scratch/dump"
        compare "$scratch/dump" "$name.dump"
        # shellcheck disable=SC2086
        "$toll" $options --target=c -o "$scratch/$name" "$source" >/dev/null 2>&1 || true
        cat "$scratch/$name.h" "$scratch/$name.c" >"$scratch/text"
        compare "$scratch/text" "$name.c_text"
        # shellcheck disable=SC2086
        "$toll" $options --target=java -o "$scratch/$name" "$source" >/dev/null 2>&1 || true
        compare "$scratch/$name.java" "$name.java"
        [ -z "$evaluate" ] || "$evaluate" "$scratch/$name.kob" || failed=1
    fi
done
exit $failed

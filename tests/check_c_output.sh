#!/usr/bin/env bash
# The C text of every example, golden source and program compiles without a warning, comes out the same
# on every run, and replaces older files as a whole.
# usage: check_c_output.sh SOURCE_DIRECTORY TOLL C_COMPILER
set -euo pipefail
source=$1 toll=$2 cc=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

compilers=("$cc")
[ -z "$(command -v clang || true)" ] || compilers+=(clang)
flags=(-std=c11 -Wall -Wextra -Werror -O1 -I "$source/runtime/c/include")

fail() {
    echo "$*"
    exit 1
}

# Compiles what a folder's sources give; the sources whose own errors stop them give nothing.
compile_folder() { # FOLDER [OPTION...]
    local folder=$1 output=$scratch/$2 made=0
    shift 2
    mkdir -p "$output"
    for file in "$folder"/*.tl "$folder"/used/*.tl; do
        [ -e "$file" ] || continue
        (cd "$folder" && "$toll" --target=c "$@" -o "$output" "$file") >"$scratch/said" 2>&1 || true
    done
    for text in "$output"/*.c; do
        for compiler in "${compilers[@]}"; do
            "$compiler" "${flags[@]}" -I "$output" -c "$text" -o "$scratch/object.o" ||
                fail "$compiler refuses $text"
        done
        made=$((made + 1))
    done
    echo "$made files of $folder"
    [ "$made" -ge "$least" ]
}
least=8 compile_folder "$source/examples" examples -I "$source/examples"
least=5 compile_folder "$source/tests/golden" golden -I "$source/tests/golden/used"
least=8 compile_folder "$source/tests/programs" programs -b -I "$source/tests/programs"

# The same text on every run, whatever the path; several targets of one parse.
cd "$source/examples"
mkdir "$scratch/again" "$scratch/both"
"$toll" --target=c -o "$scratch/again/relay_test.c" "$PWD/relay_test.tl"
cmp "$scratch/examples/relay_test.c" "$scratch/again/relay_test.c"
cmp "$scratch/examples/relay_test.h" "$scratch/again/relay_test.h"
"$toll" --target=kob --target=c -o "$scratch/both" relay_test.tl
"$toll" -o "$scratch/both/alone.kob" relay_test.tl
cmp "$scratch/both/relay_test.c" "$scratch/again/relay_test.c"
[ -s "$scratch/both/relay_test.kob" ] && [ -s "$scratch/both/relay_test.h" ]

# What C cannot express: the comment in the text, a message, status 1.
cd "$scratch"
printf 'MODULE odd\nFUNCTION VOID f()\nPRIVATE\nFUNCTION VOID f()\nBEGIN\n    RAISE 1\nEND\n' >odd.tl
status=0
"$toll" --target=c odd.tl >said 2>&1 || status=$?
[ "$status" = 1 ] || fail "status $status for what C cannot express"
grep -q "1 place cannot be expressed in C" said || fail "no message for what C cannot express"
grep -q "ERROR - RAISE statement cannot be mapped on 'C' code" odd.c || fail "no comment in the text"

# Neither file is touched if one of them cannot be replaced.
cp odd.h before.h
rm odd.c && mkdir odd.c
printf 'MODULE odd\nFUNCTION VOID other()\nPRIVATE\nFUNCTION VOID other()\nBEGIN\nEND\n' >odd.tl
"$toll" --target=c odd.tl >said 2>&1 && fail "writes over a directory"
cmp odd.h before.h || fail "half of an output was replaced"
[ -z "$(find . -name '.toll-*')" ] || fail "leaves a temporary directory"

#!/usr/bin/env bash
# The programs in the description of the library build as C11 without a warning, and do what it says.
# usage: check_embedding.sh DOCUMENT SOURCE_DIRECTORY LIBRARY C_COMPILER
set -euo pipefail
document=$1 source=$2 library=$3 cc=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

awk '/^```c$/ { inside = 1; next } /^```$/ { inside = 0; file = ""; next }
     inside && file == "" { file = $2; sub(/:$/, "", file) } inside { print > file }' "$document"
for program in check look bench; do
    "$cc" -std=c11 -Wall -Wextra -Wpedantic -Werror -I "$source/include" $program.c "$library" \
        -Wl,-rpath,"$(dirname "$library")" -o $program
done

printf 'MODULE lamp\nCONST VOLTAGE RATED = 12V\nFUNCTION INT f(VOLTAGE at)\nPRIVATE\nFUNCTION INT f(VOLTAGE at)\nBEGIN\n    RETURN 1\nEND\n' >lamp.tl
[ "$(./check lamp.tl lamp.kob)" = "LAMP is compiled" ]
./look lamp.kob >looked
grep -qx 'VOLTAGE LAMP.RATED = 12000' looked
grep -qx 'CODE LAMP.f at 0' looked
grep -qx 'FUNCTION LAMP.f' looked
grep -qx '    0: VOLTAGE at' looked

sed 's/RETURN 1/RETURN at/' lamp.tl >broken.tl
rm lamp.kob
if ./check broken.tl lamp.kob >said; then exit 1; fi
grep -qx 'broken.tl, line 7: Type mismatch - Expression should return INT' said
[ ! -e lamp.kob ]
if ./check missing.tl lamp.kob >said || ./look missing.kob >>said; then exit 1; fi
[ "$(wc -l <said)" -eq 2 ]

./bench sh volt 1500 | grep -qx '1.5V'
printf 'SHOW VOLTAGE 12000\n' | ./bench | grep -q '12V'
if ./bench show >said </dev/null; then exit 1; fi

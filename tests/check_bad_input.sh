#!/usr/bin/env bash
# Sources, settings and modules that no one would write: each gives a message or a status, soon.
# usage: check_bad_input.sh TOLL PKOB
set -uo pipefail
toll=$1 pkob=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
failed=0

# expect STATUS PATTERN FILE...: compiles with no more than a minute, and looks for a message
expect() {
    local status=$1 pattern=$2 got=0
    shift 2
    timeout 60 "$toll" -n "$@" >out 2>err || got=$?
    [ "$got" -eq "$status" ] || { echo "status $got, not $status: $*"; head -n 5 err; failed=1; }
    [ -z "$pattern" ] || grep -qa -- "$pattern" err || { echo "no '$pattern': $*"; head -n 5 err; failed=1; }
}
repeat() { head -c "$2" /dev/zero | tr '\0' "$1"; }

: >empty.tl; expect 1 "Empty source file" empty.tl
printf 'x' >one.tl; expect 1 "Compilation abandoned" one.tl
printf 'MODULE noend\nPRIVATE' >noend.tl; expect 0 "" noend.tl
printf 'MODULE crlf\r\nPRIVATE\r\nVAR INT x\r\n' >crlf.tl; expect 0 "" crlf.tl
printf 'MODULE nul\nPRIVATE\nVAR INT \0x\n' >nul.tl; expect 1 "" nul.tl
printf 'MODULE high\nPRIVATE\nVAR INT \377\200\n' >high.tl; expect 1 "Strange Separator" high.tl
head -c 100000 /dev/urandom >random.tl; expect 1 "" random.tl
head -c 100000 /dev/zero >zero.tl; expect 1 "" zero.tl

{ printf 'MODULE longline\nPRIVATE\nVAR INT '; repeat x 100000; echo; } >longline.tl
expect 1 "Field too large" longline.tl
{ printf 'MODULE tabs\nPRIVATE\nFUNCTION VOID f()\nBEGIN\n\tf()\n        f()\n \tf()\nEND\n'; } >tabs.tl
expect 0 "" tabs.tl
{ printf 'MODULE deep\nCONST INT A = \\\n'
  for _ in $(seq 100); do repeat '(' 100; printf '\\\n'; done
  printf '1 \\\n'
  for _ in $(seq 100); do repeat ')' 100; printf '\\\n'; done
  printf '\nPRIVATE\n'; } >deep.tl
expect 1 "Expression too complex" deep.tl
{ printf 'MODULE chain\nCONST INT A = 1'; for _ in $(seq 2000); do printf '\\\n'; repeat x 0; printf '+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1'; done; printf '\nPRIVATE\n'; } >chain.tl
expect 0 "" chain.tl
{ printf 'MODULE errors\nPRIVATE\n'; yes 'junk' | head -n 100000; } >errors.tl
expect 1 "too many errors" errors.tl
expect 1 "Statement ignored" --no-error-limit errors.tl

printf 'MODULE a\nUSES b\nPRIVATE\n' >a.tl; printf 'MODULE b\nUSES a\nPRIVATE\n' >b.tl; expect 0 "" a.tl
printf 'MODULE c\nUSES c\nPRIVATE\n' >c.tl; expect 0 "" c.tl
mkdir folder.tl; printf 'MODULE d\nUSES folder\nPRIVATE\n' >d.tl; expect 1 "Failed to USE module 'FOLDER'" d.tl
expect 1 "File cannot be opened" folder.tl
printf 'BODY e\nBODY e\n' >e.tl; expect 1 "" e.tl
expect 1 "File name too long" "$(repeat n 5000).tl"

# Settings that are damaged, huge or a directory are as good as none.
for settings in random.tl zero.tl folder.tl longline.tl; do
    OSTRUM_SETTINGS=$settings OSTRUM_DEFAULT_SETTINGS=$settings expect 0 "" crlf.tl
done

# Modules cut short or of other content: one line and status 1.
"$toll" -g -o whole.kob crlf.tl
size=$(stat -c %s whole.kob)
for length in 0 1 4 20 $((size / 2)) $((size - 1)); do
    head -c "$length" whole.kob >cut.kob
    timeout 60 "$pkob" --all cut.kob >out 2>err
    [ $? -eq 1 ] && [ "$(wc -l <err)" -eq 1 ] || { echo "module of $length bytes"; cat err; failed=1; }
done
timeout 60 "$pkob" random.tl >out 2>err
[ $? -eq 1 ] && [ "$(wc -l <err)" -eq 1 ] || { echo "random module"; cat err; failed=1; }

exit $failed

#!/usr/bin/env bash
# The command line of toll: usage, exit status, and what becomes of outputs.
# usage: check_toll.sh TOLL
set -uo pipefail
toll=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
failed=0

# expect STATUS PATTERN COMMAND...: the status, and a line on standard error that matches (none if empty)
expect() {
    local status=$1 pattern=$2 got=0
    shift 2
    "$@" >out 2>err || got=$?
    if [ "$got" -ne "$status" ]; then echo "status $got, not $status: $*"; cat err; failed=1; fi
    if [ -z "$pattern" ] && [ -s err ]; then echo "speaks: $*"; cat err; failed=1; fi
    if [ -n "$pattern" ] && ! grep -q -- "$pattern" err; then echo "no '$pattern': $*"; cat err; failed=1; fi
}
is() { "$@" || { echo "not so: $*"; failed=1; }; }

printf 'MODULE good\nPRIVATE\n' >good.tl
printf 'MODULE other\nPRIVATE\n' >other.tl
printf 'MODULE bad\nPRIVATE\nVAR VOID nothing\n' >bad.tl

expect 2 "try 'toll --help'" "$toll"
expect 2 "bad option '-Z'" "$toll" -Z good.tl
expect 2 "bad option '--wrong'" "$toll" --wrong good.tl
expect 2 "argument missing for '-o'" "$toll" good.tl -o
expect 2 "one source file" "$toll" -o x.kob good.tl other.tl
expect 2 "bad name to define" "$toll" -D A=B good.tl
expect 2 "bad name to define" "$toll" -D A,B good.tl
expect 2 "too many names" "$toll" -D{A,B,C,D,E,F,G,H,I,J,K} good.tl
expect 2 "bad format" "$toll" --diagnostics=xml good.tl
expect 2 "bad use of colour" "$toll" --color=red good.tl
for jobs in 0 2x 100000; do expect 2 "bad number of jobs" "$toll" -j $jobs good.tl; done
expect 2 "bad option '-MX'" "$toll" -MX good.tl
expect 2 "argument missing for '-MF'" "$toll" good.tl -MD -MF
expect 2 "MF goes with -MD" "$toll" -MF x good.tl
expect 2 "MF goes with one" "$toll" -MD -MF x good.tl other.tl
expect 2 "bad section listing" "$toll" --list-sections=half good.tl
is [ "$(wc -l <err)" -eq 1 ]
expect 0 "" "$toll" --help
is grep -q -- "--diagnostics=FORMAT" out
expect 0 "" "$toll" --version

# Default outputs, several sources, a name with and without extension.
expect 0 "" "$toll" good.tl other.tl
is [ -s good.kob ] && is [ -s other.kob ]
mkdir deep
expect 0 "" "$toll" -o deep/plain good.tl
is [ -s deep/plain ]
expect 0 "" "$toll" -n -o never.kob good.tl
is [ ! -e never.kob ]
expect 1 "Illegal type for variable" "$toll" bad.tl good.tl
is [ ! -e bad.kob ]

# What cannot be read or written leaves the older file, and no trace beside it.
cp good.kob before
expect 1 "missing.tl: File cannot be opened" "$toll" missing.tl
expect 1 "No such file" "$toll" -o nowhere/x.kob good.tl
mkfifo deep/pipe
expect 1 "Not a regular file" "$toll" -o deep/pipe good.tl
expect 0 "" "$toll" -o deep good.tl
is [ -s deep/good.kob ]
expect 1 "Output is a source" "$toll" -o good.tl good.tl
is grep -q MODULE good.tl
(trap '' XFSZ; ulimit -f 0; "$toll" -o good.kob other.tl) >out 2>/dev/null
is cmp -s before good.kob
expect 1 "Illegal type" "$toll" -o good.kob bad.tl
is cmp -s before good.kob
is [ -z "$(find . -name '.toll-*')" ]

# Rights: those of the file replaced, else those that the mask leaves.
(umask 027; "$toll" -o rights.kob good.tl)
is [ "$(stat -c %a rights.kob)" = 640 ]
chmod 604 rights.kob
expect 0 "" "$toll" -o rights.kob good.tl
is [ "$(stat -c %a rights.kob)" = 604 ]

# The same bytes on every run, in any place.
export SOURCE_DATE_EPOCH=1000000000
expect 0 "" "$toll" -g -l -o a.kob good.tl
mv a.kob first
expect 0 "" "$toll" -g -l -o "$PWD/deep/a.kob" good.tl
is cmp -s first deep/a.kob

# In JSON nothing but objects is written, problems of the driver included.
expect 1 '"severity":"fatal","text":"File cannot be opened"' "$toll" --diagnostics=json missing.tl bad.tl
is [ "$(grep -vc '^{.*}$' err)" -eq 0 ]

# As C compilers write it, and as a log, whose columns are characters.
printf 'MODULE space\nPRIVATE\nCONST MESSAGE A = "\xc3\xbc" + nothing\n' >'sp ace.tl'
expect 1 '^bad.tl:3:17: error: Illegal type for variable$' "$toll" --diagnostics=gcc bad.tl
expect 1 '^missing.tl: fatal error: File cannot be opened$' "$toll" --diagnostics=gcc missing.tl
expect 1 '"uri": "sp%20ace.tl"' "$toll" --diagnostics=sarif 'sp ace.tl' missing.tl good.tl
python3 - err <<'END' || { echo "no proper SARIF:"; cat err; failed=1; }
import json, sys
log = json.load(open(sys.argv[1]))
assert log["version"] == "2.1.0"
run, = log["runs"]
assert run["tool"]["driver"]["name"] == "toll" and run["columnKind"] == "unicodeCodePoints"
assert run["invocations"] == [{"executionSuccessful": False}]
assert all(r["message"]["text"] and r["level"] in ("note", "warning", "error") for r in run["results"])
places = [r["locations"][0]["physicalLocation"] for r in run["results"]]
assert places[-1] == {"artifactLocation": {"uri": "missing.tl"}}
assert any(p.get("region") == {"startLine": 3, "startColumn": 32} for p in places), places
END
expect 0 '"results": \[\]' "$toll" --diagnostics=sarif good.tl

# Colours mark severities where they are wanted.
escape=$(printf '\033')
expect 1 "^$escape\[1;31m\*\* ERROR$escape\[0m : Illegal type" "$toll" --color=always bad.tl
expect 1 "$escape\[1;31merror:$escape\[0m Illegal" "$toll" --color=always --diagnostics=gcc bad.tl
for wanted in --color=auto --color=never "--color=always --diagnostics=json"; do
    # shellcheck disable=SC2086  # the options are words
    expect 1 "Illegal" "$toll" $wanted bad.tl
    is [ "$(grep -c "$escape" err)" -eq 0 ]
done
if command -v script >/dev/null; then
    export TERM=xterm
    for refused in "" yes; do
        NO_COLOR=$refused script -qec "$toll bad.tl" typescript >/dev/null
        colored=$(grep -c "$escape" typescript)
        is [ "$colored" -eq "$([ -z "$refused" ] && echo 1 || echo 0)" ]
    done
fi

# Several at a time: the same outputs, messages and listings, in the order of the sources.
printf 'MODULE quiz\nPRIVATE\nTREE BOOL Ask()\nBEGIN\nEND\n' >quiz.tl
sources="good.tl missing.tl bad.tl quiz.tl other.tl bad.tl"
for form in text gcc json sarif; do
    for jobs in 1 3; do
        # shellcheck disable=SC2086  # the sources are words
        "$toll" -j $jobs --diagnostics=$form --print-scopes $sources >out$jobs 2>err$jobs
        is [ $? -eq 1 ]
    done
    is [ -s err1 ] && is diff err1 err3 && is cmp out1 out3
done
"$toll" -j 4 --tree-graph=trees.gv quiz.tl good.tl other.tl
is grep -q Ask trees.gv
expect 1 "Output is a source" "$toll" -j 4 --tree-graph=quiz.tl good.tl quiz.tl
timeout 20 env --ignore-signal=CHLD "$toll" -j 2 -n good.tl quiz.tl other.tl
is [ $? -eq 0 ]
mkdir all
expect 0 "" "$toll" -j 2 -o all good.tl other.tl
is [ -s all/good.kob ] && is [ -s all/other.kob ]

# What an output is made from.
printf 'MODULE twig\nCONST INT A = 1\nPRIVATE\n' >twig.tl
printf 'MODULE main\nUSES twig\nCONST INT C = TWIG.A\nPRIVATE\n' >main.tl
expect 0 "" "$toll" -MD -o 'all/the $main#.kob' main.tl
is [ "$(tr -s '\n' ' ' <'all/the $main#.d')" = 'all/the\ $$main\#.kob: \ main.tl \ twig.tl ' ]
expect 0 "" "$toll" --target=c --target=kob -MD -MF list twig.tl
is grep -q '^twig.kob twig.h twig.c:' list
rm list
expect 1 "Illegal type" "$toll" -MD -MF list bad.tl
is [ ! -e list ]
expect 1 "Output is a source" "$toll" -MD -MF twig.tl twig.tl

# -I comes before TollInclude, and the name is found whatever its case.
mkdir first_lib second_lib
printf 'MODULE lib\nCONST INT A = 1\nPRIVATE\n' >first_lib/lib.tl
printf 'MODULE lib\nCONST INT B = 1\nPRIVATE\n' >second_lib/Lib.tl
printf 'MODULE user\nUSES lib\nCONST INT C = LIB.A\nPRIVATE\n' >user.tl
TollInclude=second_lib expect 0 "" "$toll" -I first_lib user.tl
TollInclude=second_lib expect 1 "Unknown identifier" "$toll" user.tl

exit $failed

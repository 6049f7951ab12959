#!/usr/bin/env bash
# The interactive tool through a pipe, with -c and with command files: what it prints, what it leaves in
# hand from one command to the next, and its exit status.
# usage: check_ostrum.sh OSTRUM EXAMPLES
set -uo pipefail
ostrum=$1 examples=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$examples"/*.tl "$scratch" && cd "$scratch" || exit 1
failed=0
complain() { echo "$*"; failed=1; }

# The status and the output of commands, each given to -c.
try() { # STATUS PATTERN COMMAND...
    local status=$1 pattern=$2 commands=()
    shift 2
    for command; do commands+=(-c "$command"); done
    timeout 20 "$ostrum" "${commands[@]}" >output 2>&1 </dev/null
    local given=$?
    [ "$given" -eq "$status" ] || complain "$*: status $given, not $status"
    grep -qE -- "$pattern" output || complain "$*: no '$pattern' in: $(cat output)"
}

# Compiling takes the module and its source in hand; a module compiled before is forgotten.
mkdir deep
try 0 'GLOBAL +START +\$NO_START' 'compile thermistor.tl,no_start.tl/debug' 'show symbol'
[ -s thermistor.kob ] || complain "no thermistor.kob"
try 0 '^    -> hold$' 'comp no_start.tl' 'sh tree battery_charge'
try 1 'No tree lamp' 'comp no_start.tl' 'show tree lamp'
try 0 '^  WAVEFORM HARNESS' 'comp harness.tl' 'show data' 'show data Crank_Signal'
try 1 'ostrum: harness.kob: no data section signal' 'comp harness.tl' 'show data signal'
try 0 'SOURCE +CODE +no_start.tl' 'compile no_start.tl' 'list /symbols'
try 0 'no_start.kob: GLOBAL' 'compile no_start.tl' 'search $no_*'
try 0 'TREE NO_START.find_no_start' 'compile no_start.tl /debug' 'show frame'
try 0 '"name"' 'compile no_start.tl' 'list/json'
try 0 '' 'compile no_start.tl /target=c,java /output="deep/"'
for file in NO_START.java no_start.c no_start.h; do
    [ -n "$(find deep -iname "$file")" ] || complain "no $file"
done
try 0 'RET$' 'compile thermistor.tl' 'show symbol plausible'
mkdir used && cp no_start.tl relay_test.tl tolerance.tl used && mv hardware.tl deep
try 1 'Failed to USE' 'set directory "used"' 'compile no_start.tl'
try 0 '^INCLUDE +../deep$' 'set directory used' 'set include "../deep"' 'compile no_start.tl' 'set show'
mv deep/hardware.tl .
try 0 'OUTPUTS' 'set define TUNED,WORKSHOP' 'compile variant_setup.tl' 'search *.outputs'
printf 'MODULE variant\nPRIVATE\n#IFDEF TUNED\nTREE INT walk()\nBEGIN\n    LEAF only 7\nEND\n#ENDIF\n' >variant.tl
try 0 '^  LEAF only  7' 'set define TUNED' 'set source variant.tl' 'show tree walk'

# What was compiled before plays no part: the same source again, one with errors between.
printf 'MODULE broken\nFUNCTION f\n  x := 1\n' >broken.tl
try 1 "'x' - Unknown identifier" 'compile broken.tl' 'compile no_start.tl' 'compile no_start.tl'
grep -q 'already declared' output && complain "a compilation sees the one before"
[ -e broken.kob ] && complain "broken.kob was written"

# Quantities, exactly.
try 0 '^VOLTAGE, displayed as 1.5V, a count of 1500$' 'convert 1.5V'
try 0 '^  -0.000005kV$' 'convert -5mV'
try 0 '^  1500mV$' 'convert 1.5V mV'
try 0 '^  20°C$' 'convert 20C'
try 0 '^  1.666666666hours$' 'convert 100minutes hours'
try 1 'VOLTAGE cannot be shown in ms' 'convert 1V ms'
try 1 'A number with a unit is wanted' 'convert V'
try 1 '\*\* ' 'convert 1.5V+1V'

# What is refused, fails or is missing; later commands are carried out.
try 1 'Command not recognised' 'nonsense' 'convert 1V'
grep -q '^  1V$' output || complain "nothing is done after a command that is refused"
try 1 'Mandatory parameters missing' 'convert'
try 1 'No module in hand' 'list'
try 1 'nowhere.kob' 'list nowhere.kob'
try 1 'No name matches' 'search zzz'
try 1 'deep/x: No such' 'set directory "deep/x"'
try 1 'Failed to open command file nowhere' '@nowhere'
try 0 'Choices   : text' 'help compile'
try 0 'Shows a quantity' 'conv ?'
try 0 '/tree-graph=FILE' 'compile/help'

# A path with '/' stands in quotes.
cp no_start.tl deep
try 1 'Qualifier not recognised' 'compile deep/no_start.tl'
try 0 '' 'compile "deep/no_start.tl"/no-output'

# Command files and standard input say nothing of prompts; files nest, and one cannot read itself.
printf '! all\n@inner\nset show\nexit\nnonsense\n' >outer.com
printf 'set module one.kob\n' >inner.com
timeout 20 "$ostrum" outer >output 2>&1 </dev/null || complain "outer.com fails"
grep -q '^MODULE     one.kob' output || complain "outer.com: $(cat output)"
timeout 20 "$ostrum" --echo inner.com | grep -q '^ostrum> set module one.kob' || complain "--echo"
echo '@again' >again.com
timeout 20 "$ostrum" again.com >output 2>&1 </dev/null && complain "a file reads itself"
timeout 20 "$ostrum" nowhere.com >output 2>&1 </dev/null
[ $? -eq 1 ] && grep -q 'nowhere.com: cannot be opened' output || complain "nowhere.com: $(cat output)"
printf 'convert 1V\nexit\nnonsense\n' | timeout 20 "$ostrum" >output || complain "a pipe fails"
grep -q 'ostrum>' output && complain "a prompt in a pipe"
timeout 20 "$ostrum" <&- >output 2>&1 || complain "closed standard input"
head -c 300000 /dev/urandom | timeout 20 "$ostrum" >output 2>&1
[ $? -eq 1 ] || complain "noise"
"$ostrum" --nonsense >output 2>&1
[ $? -eq 2 ] || complain "a wrong option"
exit $failed

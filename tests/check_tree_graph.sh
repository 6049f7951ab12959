#!/usr/bin/env bash
# The graphs that toll draws of trees: the exact text, where it goes, and that dot can read it if
# there is a dot.
# usage: check_tree_graph.sh TOLL
set -euo pipefail
toll=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

cat >lamp.tl <<'END_OF_SOURCE'
MODULE lamp
TREE INT find_fault(INT lamp, STRING colour)
TREE VOID idle()
PRIVATE
FUNCTION BOOL is_lit(INT lamp, STRING colour)
BEGIN
    RETURN TRUE
END
TREE INT find_fault(INT lamp, STRING colour)
BEGIN
    NODE lit is_lit(lamp, "re;\\d\"")   ; "
    CASE TRUE GOTO fine
    CASE FALSE GOTO wire
    NODE count lamp + 1
    NODE again   lamp + 2   ; count once more
    GOTO lit
    NODE sum lamp + \
             7 + ; "seven \
             8   ; eight
    SUBTREE wire is_lit(lamp, colour)
    CASE FALSE, TRUE GOTO fine
    LEAF fine 0
END
TREE VOID idle()
BEGIN
LEAF done
END
END_OF_SOURCE
cat >expected <<'END'
digraph "LAMP.find_fault" {
    "lit" [label="lit\nis_lit(lamp, \"re;\\\\d\\\"\")", shape=ellipse];
    "count" [label="count\nlamp + 1", shape=ellipse];
    "again" [label="again\nlamp + 2", shape=ellipse];
    "sum" [label="sum\nlamp + \n             7 + \n             8", shape=ellipse];
    "wire" [label="wire\nis_lit(lamp, colour)", shape=box];
    "fine" [label="fine\n0", shape=ellipse, peripheries=2];
    "lit" -> "fine" [label="TRUE"];
    "lit" -> "wire" [label="FALSE"];
    "count" -> "again" [style=dashed];
    "again" -> "lit";
    "sum" -> "wire" [style=dashed];
    "wire" -> "fine" [label="TRUE"];
    "wire" -> "fine" [label="FALSE"];
}
digraph "LAMP.idle" {
    "done" [label="done", shape=ellipse, peripheries=2];
}
END

"$toll" -n --tree-graph lamp.tl >got
diff -u expected got
[ ! -e lamp.kob ]

# In a file, beside the modules; the graphs of two sources stand in one.
sed 's/^MODULE lamp/MODULE other/' lamp.tl >other.tl
"$toll" --tree-graph=trees.gv lamp.tl other.tl
[ -s lamp.kob ] && [ -s other.kob ]
{ cat expected; sed 's/"LAMP\./"OTHER./' expected; } | diff -u - trees.gv

# With an error in one source the older file stays, and so does a source or a module in its place.
cp trees.gv before
printf 'MODULE bad\nPRIVATE\nVAR VOID nothing\n' >bad.tl
! "$toll" --tree-graph=trees.gv lamp.tl bad.tl 2>/dev/null || exit 1
cmp before trees.gv
! "$toll" --tree-graph bad.tl lamp.tl >got 2>/dev/null || exit 1
[ ! -s got ]
! "$toll" --tree-graph=lamp.tl lamp.tl 2>said || exit 1
grep -q 'Output is a source or a module' said
grep -q 'MODULE lamp' lamp.tl
! "$toll" --tree-graph=lamp.kob lamp.tl 2>said || exit 1
grep -q 'Output is a source or a module' said
! "$toll" --tree-graph=nowhere/x lamp.tl 2>said || exit 1
grep -q 'No such file' said
[ -z "$(find . -name '.toll-*')" ]

# One picture for each of the four trees.
if command -v dot >/dev/null; then
    dot -Tsvg trees.gv -O 2>said
    [ ! -s said ]
    [ "$(cat trees.gv*.svg | grep -c '</svg>')" -eq 4 ]
fi

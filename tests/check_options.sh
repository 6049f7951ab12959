#!/usr/bin/env bash
# The options of a tool: what --help lists, what its manual page describes and what the shells complete
# are the same; the page and the completions are well formed.
# usage: check_options.sh SOURCE_DIRECTORY TOOL
set -uo pipefail
source=$1 tool=$2
name=$(basename "$tool")
page=$source/docs/man/$name.1
completion=$source/tools/completion
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0
complain() { echo "$*"; failed=1; }

# An option begins a word; what follows its name does not count.
options() { grep -oE -- "(^|[^-A-Za-z0-9])--?[A-Za-z][A-Za-z-]*" | grep -oE -- "-.*" | sed 's/-$//' | sort -u; }

"$tool" --help | grep -E '^  +-' | sed -E 's/^(  .{26}).*/\1/' | options >"$scratch/help"
[ -s "$scratch/help" ] || complain "no options in --help"

# In the page an option is the argument of Fl, without its first stroke.
grep -E '^\.It Fl ' "$page" | sed -E 's/^\.It //; s/Op Fl/Fl/; s/ , / Fl /g; s/(Ns|Ar|Cm|Op).*(Fl [A-Z]|$)/ \2/' |
    grep -oE '(Fl) [A-Za-z-]+' | sed 's/Fl /-/' | sort -u >"$scratch/page"
sed -n "/compgen -W '-/{:more; /' --/!{N; b more;}; s/.*-W '//; s/' --.*//; p}" "$completion/$name.bash" | options >"$scratch/bash"
grep -E "^    '[(*-]" "$completion/_$name" | sed -E "s/^    ('\(-.*\)'|'\*')\{/{/; s/\[.*//; s/[{},+=*']/ /g" |
    grep -v '^ *:' | sed 's/^ *(- [^)]*)/ /' | options >"$scratch/zsh"
for place in page bash zsh; do
    diff "$scratch/help" "$scratch/$place" >"$scratch/diff" || complain "--help and $place: $(cat "$scratch/diff")"
done

if command -v mandoc >/dev/null; then
    for any in "$source"/docs/man/*.[135]; do
        mandoc -Tlint -W warning "$any" || complain "$any is no proper page"
    done
fi
bash -n "$completion/$name.bash" || failed=1
if command -v zsh >/dev/null; then zsh -n "$completion/_$name" || failed=1; fi

# What bash offers, as it calls the function.
complete_words() { # WORD...
    bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); compopt() { :; }
        "_$1" 2>&1; printf "%s\n" "${COMPREPLY[@]}"' _ "$completion/$name.bash" "$@"
}
[ "$(complete_words "$name" --vers)" = --version ] || complain "bash does not complete --vers"
exit $failed

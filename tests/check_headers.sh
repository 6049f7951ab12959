#!/usr/bin/env bash
# Every header compiles as the first line of an empty file: the public ones as pedantic C11 and as
# C++20, the internal ones as C++20.
# usage: check_headers.sh SOURCE_DIRECTORY C_COMPILER CXX_COMPILER
set -euo pipefail
source=$1 cc=$2 cxx=$3
cd "$source"

flags=(-Wall -Wextra -Wpedantic -Werror -fsyntax-only -Iinclude -I. -x)
failed=0
check() { printf '#include <%s>\n' "$1" | "${@:2}" "${flags[@]}" "$language" - || { echo "not self-contained: $1"; failed=1; }; }
for header in include/ostrum.h include/ostrum/*.h; do
    language=c check "${header#include/}" "$cc" -std=c11
    language=c++ check "${header#include/}" "$cxx" -std=c++20
done
for header in {core,host,cli,units,frontend,names,expr,stmt,data,codegen,module}/*.h; do
    [ -e "$header" ] || continue
    language=c++ check "$header" "$cxx" -std=c++20 -fno-exceptions -fno-rtti
done
exit $failed

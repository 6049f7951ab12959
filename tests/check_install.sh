#!/usr/bin/env bash
# Installs a build into a scratch tree and builds a C11 and a C++20 client against what lies there.
# usage: check_install.sh BUILD_DIRECTORY SOURCE_DIRECTORY C_COMPILER CXX_COMPILER
set -euo pipefail
build=$1 source=$2 cc=$3 cxx=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/usr" >/dev/null
libdir=$(dirname "$(find "$scratch/usr" -name 'libostrum.so' | head -n 1)")

export PKG_CONFIG_PATH=$libdir/pkgconfig
flags=$(pkg-config --define-variable=prefix="$scratch/usr" --cflags --libs ostrum)
# shellcheck disable=SC2086  # the flags are words
"$cc" -std=c11 -Wall -Wextra -Wpedantic -Werror "$source/tests/install/client.c" $flags \
    -Wl,-rpath,"$libdir" -o "$scratch/client_c"
"$scratch/client_c" | grep -qx Successful

cmake -S "$source/tests/install" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/usr" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$scratch/build" >/dev/null
"$scratch/build/client"

"$scratch/usr/bin/toll" --version | grep -q '^toll '
"$scratch/usr/bin/pkob" --version | grep -q '^pkob '

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

for tool in toll pkob ostrum; do
    "$scratch/usr/bin/$tool" --version | grep -q "^$tool "
    test -s "$scratch/usr/share/man/man1/$tool.1"
    test -s "$scratch/usr/share/bash-completion/completions/$tool"
done

# What C from a source needs of the installed tree.
cp "$source/examples/hardware.tl" "$source/examples/tolerance.tl" "$source/examples/relay_test.tl" "$scratch"
cd "$scratch"
"$scratch/usr/bin/toll" --target=c hardware.tl tolerance.tl relay_test.tl
cat >main.c <<'END'
#include <tollrt.h>
#include "hardware.h"
#include "relay_test.h"
static VOLTAGE measure(INT channel) { return channel == 0 ? 12600 : 12550; }
static BOOL set_output(INT channel, SWITCH_STATE state) { return channel == 5 && state <= 2; }
static VOID pause(TIME length) { (void)length; }
int main(void)
{
    toll_set_syscall(16, (TOLL_FUNCTION)measure);
    toll_set_syscall(32, (TOLL_FUNCTION)set_output);
    toll_set_syscall(34, (TOLL_FUNCTION)pause);
    return RELAY_TEST_contact_ok() && RELAY_TEST_coil_current(12000, 8000) == 150 ? 0 : 1;
}
END
flags=$(pkg-config --define-variable=prefix="$scratch/usr" --cflags --libs tollrt)
# shellcheck disable=SC2086  # the flags are words
"$cc" -std=c11 -Wall -Wextra -Werror -I. main.c relay_test.c tolerance.c hardware.c $flags -o client_toll
./client_toll

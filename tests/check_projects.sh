#!/usr/bin/env bash
# Installs a build into a scratch tree, and builds and runs one of the example projects against what lies
# there: without a warning, and with the same report in every language.
# With p_code the program is that in C, and the evaluator runs the modules.
# usage: check_projects.sh c|java|p_code BUILD_DIRECTORY SOURCE_DIRECTORY C_COMPILER C++_COMPILER EVALUATOR_LIBRARY
set -euo pipefail
language=$1 build=$2 source=$3 cc=$4 cxx=$5 evaluator=$6
projects=$source/examples/projects
[ "$language" != java ] || command -v javac >/dev/null || { echo "skipped: no javac on this machine"; exit 77; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
usr=$scratch/usr
cmake --install "$build" --prefix "$usr" >/dev/null

# The standard output is the report's.
fail() {
    cat "$scratch/said" >&2
    echo "$*" >&2
    exit 1
}

say_nothing() { # COMMAND...
    "$@" >"$scratch/said" 2>&1 || fail "fails: $*"
    [ ! -s "$scratch/said" ] || fail "speaks: $*"
}

# What is made again after a source has changed, in one word each.
made_again() { # SOURCE
    sleep 0.01 # the time of a file is counted in ticks of the kernel
    touch "$scratch/projects/modules/$1"
    cmake --build "$scratch/c" -v | grep -oE 'target=c.*tl\b' | grep -oE '[a-z]+\.tl$' | sort | tr '\n' ' '
}

run_c() {
    cp -r "$projects" "$scratch/projects"
    cmake -G Ninja -S "$scratch/projects/c" -B "$scratch/c" -DCMAKE_PREFIX_PATH="$usr" \
        -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS=-Werror >"$scratch/said" 2>&1 || fail "cannot be configured"
    cmake --build "$scratch/c" -v >"$scratch/said" 2>&1 || fail "cannot be built"
    grep -q "$usr/bin/toll" "$scratch/said" || fail "another toll was found"
    cmake --build "$scratch/c" >"$scratch/said"
    grep -q "no work to do" "$scratch/said" || fail "is never done"
    [ "$(made_again starting.tl)" = "starting.tl " ] || fail "more than starting is made again"
    [ "$(made_again tester.tl)" = "starting.tl tester.tl " ] || fail "starting does not follow tester"
    "$scratch/c/starting"
}

run_java() {
    say_nothing "$projects/java/build.sh" "$scratch/java" "$usr"
    java -cp "$usr/share/java/tollrt.jar:$scratch/java/classes" Main
}

run_p_code() {
    local paths=(-I "$scratch" -I "$usr/include" -I "$source/runtime/c/include" -I "$source/tests" -I "$source")
    local library=$build/libostrum.so
    cd "$scratch"
    for module in tester starting; do
        say_nothing "$usr/bin/toll" --target=c -I "$projects/modules" "$projects/modules/$module.tl"
    done
    say_nothing "$usr/bin/toll" -I "$projects/modules" "$source/tests/targets/job.tl"
    say_nothing "$cc" -std=c11 "${paths[@]}" -c "$projects/c/main.c" "$source/runtime/c/tollrt.c"
    say_nothing "$cxx" -std=c++20 "${paths[@]}" "$source/tests/targets/project_modules.cpp" main.o tollrt.o \
        "$evaluator" "$library" -Wl,-rpath,"$build" -o run
    ./run
}

for module in tester starting; do
    say_nothing "$usr/bin/toll" --strict -I "$projects/modules" -o "$scratch/$module.kob" \
        "$projects/modules/$module.tl"
done
"run_$language" >"$scratch/report"
diff "$projects/report.txt" "$scratch/report"

#!/usr/bin/env bash
# Builds the modules in ../modules as Java, with the program around them.
# usage: build.sh DIRECTORY [PREFIX]    the classes go to DIRECTORY/classes; then
#        java -cp PREFIX/share/java/tollrt.jar:DIRECTORY/classes Main
# PREFIX is where Ostrum is installed; default: /usr/local
set -euo pipefail
prefix=${2:-/usr/local}
here=$(cd "$(dirname "$0")" && pwd)
modules=$here/../modules

mkdir -p "$1/generated" "$1/classes"
cd "$1"
# toll writes into the working directory.
(cd generated && "$prefix/bin/toll" --target=java -I "$modules" "$modules"/*.tl)
javac -Xlint:all -cp "$prefix/share/java/tollrt.jar" -d classes generated/*.java "$here"/*.java

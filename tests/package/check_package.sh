#!/usr/bin/env bash
# Installs the library, moves the tree, and builds and runs a C host against it, found by CMake and by pkg-config.
#   check_package.sh <cmake> <build folder>
set -euo pipefail
cmake=$1 build=$2
host=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --prefix "$scratch/first" >/dev/null
mv "$scratch/first" "$scratch/moved"

"$cmake" -S "$host" -B "$scratch/host" -DCMAKE_PREFIX_PATH="$scratch/moved" >/dev/null
"$cmake" --build "$scratch/host" >/dev/null
"$scratch/host/host"

libdir=$(dirname "$(find "$scratch/moved" -name velquor.pc)")
export PKG_CONFIG_PATH=$libdir
cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$host/host.c" -o "$scratch/by_pkg_config" $(pkg-config --cflags --libs velquor)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir velquor) "$scratch/by_pkg_config"

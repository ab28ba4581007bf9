#!/usr/bin/env bash
# Builds a C host against the copy of the library that is installed under a prefix, found by CMake and by pkg-config,
# and runs it.
#   build_hosts.sh <cmake> <prefix> <folder to build in>
set -euo pipefail
cmake=$1 prefix=$2 build=$3
host=$(cd "$(dirname "$0")" && pwd)

"$cmake" -S "$host" -B "$build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$cmake" --build "$build" >/dev/null

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name velquor.pc)")
export PKG_CONFIG_LIBDIR
told=$("$build/host") wanted="velquor $(pkg-config --modversion velquor):"
echo "$told"
[[ $told == "$wanted "* ]] || { echo "expected: $wanted" >&2 && exit 1; }
cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$host/host.c" -o "$build/by_pkg_config" \
    $(pkg-config --cflags --libs velquor)
LD_LIBRARY_PATH=$(pkg-config --variable=libdir velquor) "$build/by_pkg_config"

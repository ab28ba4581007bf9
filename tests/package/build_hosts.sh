#!/usr/bin/env bash
# Builds C hosts against the copy of the libraries that is installed under a prefix, found by CMake and by pkg-config,
# and runs them.
#   build_hosts.sh <cmake> <prefix> <folder to build in>
set -euo pipefail
cmake=$1 prefix=$2 build=$3
host=$(cd "$(dirname "$0")" && pwd)

"$cmake" -S "$host" -B "$build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$cmake" --build "$build" >/dev/null
if grep -i gmsh "$build/CMakeCache.txt"; then echo "looked for without the kit" >&2 && exit 1; fi

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name velquor.pc)")
export PKG_CONFIG_LIBDIR
libdir=$(pkg-config --variable=libdir velquor)
if [ -e "$libdir/libvelquor.a" ] && [ -e "$libdir/libvelquor.so" ]; then  # the static ones on request
    "$cmake" -S "$host" -B "$build/static" -DCMAKE_PREFIX_PATH="$prefix" -DVELQUOR_COMPONENTS=static >/dev/null
    "$cmake" --build "$build/static" >/dev/null
    cc -std=c99 -static -DWITH_LEVELS "$host/host.c" -o "$build/static/by_pkg_config" \
        $(pkg-config --static --cflags --libs velquor-levels)
    for program in velquor-levels_host by_pkg_config; do
        readelf -dW "$build/static/$program" | grep velquor && echo "loads the shared library" >&2 && exit 1
        "$build/static/$program"
    done
fi
strict=(-Wall -Wextra -Wpedantic -Werror)
for library in velquor velquor-levels; do
    told=$("$build/${library}_host") wanted="velquor $(pkg-config --modversion $library):"
    echo "$told"
    [[ $told == "$wanted "* ]] || { echo "expected: $wanted" >&2 && exit 1; }
    [ $library = velquor ] || strict+=(-DWITH_LEVELS)
    cc -std=c99 "${strict[@]}" "$host/host.c" -o "$build/by_pkg_config" $(pkg-config --cflags --libs $library)
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir $library) "$build/by_pkg_config"
done

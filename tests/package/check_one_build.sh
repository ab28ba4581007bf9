#!/usr/bin/env bash
# Builds C hosts and the libraries in one build, by add_subdirectory, shared and static, and runs the hosts; then installs
# the static libraries and builds hosts against that copy.
#   check_one_build.sh <cmake> <source folder>
set -euo pipefail
cmake=$1 source=$2
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
expect() { [ "$2" = "$3" ] || { echo "$1: $2, expected: $3" >&2 && exit 1; }; }

# one_build <folder> <option>...
one_build() {
    local build=$scratch/$1
    shift
    # The library's own flags hold against those of the host, which has no build type.
    "$cmake" -S "$here" -B "$build" -DVELQUOR_SOURCE="$source" -DCMAKE_CXX_FLAGS=-ffast-math "$@" >/dev/null
    "$cmake" --build "$build" --parallel 2 >/dev/null
    "$build/velquor_host" && "$build/velquor-levels_host"
    expect "a build type nobody chose" "$(grep -oE ' -(O.|DNDEBUG) ' "$build/compile_commands.json" || true)" ""
    expect "flags of the library on the host" \
        "$(sed -n '/"command".*host\.c"/s/ -fPIC//p' "$build/compile_commands.json" | grep -oE ' -[Wfg][^ ]*' || true)" ""
    expect "names of the library in the host's cache" "$(sed -n 's/^\([[:alpha:]][^:]*\):.*/\1/p' "$build/CMakeCache.txt" |
        grep -vE '^(CMAKE_|VQ_|velquor_|BUILD_SHARED_LIBS$|VELQUOR_SOURCE$)' || true)" ""
    expect "passed on by a plug-in" "$(nm -D --defined-only "$build/libplugin.so" | awk '{print $3}')" main
    "$cmake" --install "$build" --prefix "$build/installed" >/dev/null
}
one_build shared -DBUILD_SHARED_LIBS=ON
# What a linker adds by -ffast-math, which changes the arithmetic of the process that loads a library.
expect "libraries" "$(find "$scratch/shared/velquor" -name 'libvelquor*.so' | wc -l)" 2
expect "changes the host's arithmetic" \
    "$(find "$scratch/shared/velquor" -name 'libvelquor*.so' -exec nm {} + | grep -o set_fast_math || true)" ""
expect "installed where the host does not ask for it" "$(ls "$scratch/shared/installed" 2>/dev/null || true)" ""

one_build static -DBUILD_SHARED_LIBS=OFF -DVQ_INSTALL=ON
names() { nm -g --defined-only "$(find "$scratch/static/installed" -name "$1")" | awk 'NF == 3 {print $3}' | sort | xargs; }
expect "names for others" "$(names libvelquor.a)" vq_velquor
expect "names for others" "$(names libvelquor-levels.a)" "vq_check vq_levels vq_levels_watched vq_reason"
"$here/build_hosts.sh" "$cmake" "$scratch/static/installed" "$scratch/host"

#!/usr/bin/env bash
# Builds the example of the kit, and what the page about it shows, against the copy that is installed under a prefix, found
# by CMake and by pkg-config, and runs them; the command of that copy runs too.
#   build_kit_host.sh <cmake> <prefix> <folder to build in>
set -euo pipefail
cmake=$1 prefix=$2 build=$3
here=$(cd "$(dirname "$0")" && pwd)
fail() { echo "$1" >&2 && exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, expected: $3"; }
example=$(find "$prefix/share/doc" -name section.cpp)
mkdir -p "$build"

(cd "$prefix/include/velquor" && find kit -name '*.h' -printf '#include "%p"\n' | sort) >"$build/headers.cpp"
{
    printf '#include "%s"\n' kit/analysis/values.h kit/section/file.h
    echo 'int main() {'
    sed -n '/^<!-- built by/,/^```$/{/^<!--/d;/^```/d;p}' "$here/../../docs/kit.md"
    echo 'return !(a.value[VQ_GJ] > 0 && a.bound[VQ_GJ] > 0); }'
} >"$build/page.cpp"
# Each header finds what it includes, whichever comes first.
sort -r "$build/headers.cpp" >"$build/headers_reversed.cpp"
"$cmake" -S "$here/kit" -B "$build" -DCMAKE_PREFIX_PATH="$prefix" -DEXAMPLE="$example" \
    -DPAGE="$build/page.cpp" -DHEADERS="$build/headers.cpp;$build/headers_reversed.cpp" >/dev/null
"$cmake" --build "$build" >/dev/null

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name velquor-kit.pc)")
libdir=$(dirname "$PKG_CONFIG_LIBDIR")
told=$(PKG_CONFIG_LIBDIR=$PKG_CONFIG_LIBDIR pkg-config --libs velquor-kit 2>&1) && fail "found by pkg-config without its libraries"
for needed in dxflib cairo pangocairo gobject-2.0; do grep -qF "'$needed'" <<<"$told" || fail "$needed: $told"; done
PKG_CONFIG_LIBDIR+=:$(env -u PKG_CONFIG_LIBDIR pkg-config --variable pc_path pkg-config)  # pango's
export PKG_CONFIG_LIBDIR
c++ -std=c++17 "$example" -o "$build/by_pkg_config" $(pkg-config --cflags --libs velquor-kit)

"$build/page" || fail "what the page shows does not run"
told=$("$build/example")
echo "$told"
expect "built by pkg-config" "$(LD_LIBRARY_PATH=$libdir "$build/by_pkg_config")" "$told"
[[ $told == "A = 53.8"* && $told == *$'\nIy = 8356'* ]] || fail "not the values of an IPE 300"
"$prefix/bin/velquor" calc "IPE 300" --units cm --csv >/dev/null || fail "the command does not run"

# Without Gmsh there is no kit, and the message names what is missing.
if told=$("$cmake" -S "$here/kit" -B "$build/without" -DCMAKE_PREFIX_PATH="$prefix" -DEXAMPLE="$example" \
    -DPAGE="$build/page.cpp" -DHEADERS="$build/headers.cpp" -DVELQUOR_GMSH= -DCMAKE_FIND_LIBRARY_PREFIXES=none 2>&1); then
    fail "found without Gmsh"
fi
grep -qF "libgmsh-dev" <<<"$told" || fail "$told"

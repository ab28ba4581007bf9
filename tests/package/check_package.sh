#!/usr/bin/env bash
# Installs the libraries, moves the tree, where the second finds the first beside itself, and builds and runs C hosts
# against it, and a C++ host of the kit where it is built.
#   check_package.sh <cmake> <build folder> <1: with the kit, 0: without>
set -euo pipefail
cmake=$1 build=$2 kit=$3
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --prefix "$scratch/first" >/dev/null
[ -s "$scratch/first/share/doc/velquor/copyright" ] || { echo "no licences" >&2 && exit 1; }
# What Debian's packages call themselves.
[ "$(sed -n '1s/velquor (\(.*\)-.*/\1/p' "$here/../../debian/changelog")" = \
    "$(sed -n 's/^Version: //p' "$(find "$scratch/first" -name velquor.pc)")" ] || { echo "debian/changelog: another version" >&2 && exit 1; }
twice=$(sort "$build/install_manifest.txt" | uniq -d)
[ -z "$twice" ] || { echo "installed twice: $twice" >&2 && exit 1; }
mv "$scratch/first" "$scratch/moved"
loaded=$(env -u LD_LIBRARY_PATH ldd "$(find "$scratch/moved" -name libvelquor-levels.so)")
grep -qF " => $scratch/moved/" <<<"$loaded" || { echo "$loaded" >&2 && exit 1; }
"$here/build_hosts.sh" "$cmake" "$scratch/moved" "$scratch/host"
# Components by themselves.
for component in development python tools; do
    [ "$component$kit" != tools0 ] || continue
    "$cmake" --install "$build" --prefix "$scratch/$component" --component "$component" >/dev/null
    [ -s "$scratch/$component/share/doc/velquor/copyright" ] || { echo "$component: no licences" >&2 && exit 1; }
done
env -u LD_LIBRARY_PATH "$here/build_hosts.sh" "$cmake" "$scratch/development" "$scratch/host_of_development"
told=$(env -u LD_LIBRARY_PATH -u VELQUOR_LIBRARY PYTHONPATH="$scratch/python/share/velquor/python" /usr/bin/python3 -B -c \
    'from velquor import core, places; core.load_levels(); print(places.find_library())')
[ "$told" = "$scratch/python/lib/libvelquor.so.1" ] || { echo "$told" >&2 && exit 1; }
[ "$kit" = 0 ] || env -u LD_LIBRARY_PATH "$here/check_manual.sh" "$scratch/tools"
[ "$kit" = 0 ] || env -u LD_LIBRARY_PATH "$here/build_kit_host.sh" "$cmake" "$scratch/moved" "$scratch/kit"

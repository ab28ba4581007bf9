#!/usr/bin/env bash
# Builds the Debian packages, compares what they say and hold, unpacks them into an empty tree, and builds and runs
# hosts in C, C++, Fortran and Python against that tree.
#   check_debian.sh <cmake> <source folder> <build folder of the packages> <version> <python with numpy>
#     <1: with the kit and the command, 0: without>
set -euo pipefail
cmake=$1 source=$2 build=$3 version=$4 python=$5 kit=$6
tests=$source/tests
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "$1" >&2 && exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, expected: $3"; }

rm -f "$build"/*.deb
"$cmake" -S "$source" --preset package -B "$build" -DVQ_BUILD_KIT="$kit" >/dev/null
(umask 077 && "$cmake" --build "$build" --target package --parallel 2) >"$scratch/log" 2>&1 ||
    fail "$(tail -n 50 "$scratch/log")"
architecture=$(dpkg --print-architecture) libdir=usr/lib/$(gcc -print-multiarch)
runtime=$build/libvelquor1_$version-1_$architecture.deb
development=$build/libvelquor-dev_$version-1_$architecture.deb
packages=("$runtime" "$development")
if [ "$kit" = 1 ]; then
    kit_development=$build/libvelquor-kit-dev_$version-1_$architecture.deb
    tools=$build/velquor_$version-1_$architecture.deb
    packages+=("$kit_development" "$tools")
fi
expect "packages" "$(ls "$build"/*.deb | sort | xargs)" "$(printf '%s\n' "${packages[@]}" | sort | xargs)"

# What the packages say.
expect "the runtime package depends on" "$(dpkg-deb -f "$runtime" Depends | sed -E 's/ \(>= [^)]*\)//g')" \
    "libc6, libgcc-s1, libstdc++6"
expect "the development package depends on" "$(dpkg-deb -f "$development" Depends)" "libvelquor1 (= $version-1)"
expect "programs linked with it depend on" "$(dpkg-deb -I "$runtime" shlibs | sort | xargs)" \
    "libvelquor 1 libvelquor1 (>= $version-1) libvelquor-levels 1 libvelquor1 (>= $version-1)"
if [ "$kit" = 1 ]; then
    expect "the command depends on" "$(dpkg-deb -f "$tools" Depends | sed -E 's/ \(>= [^)]*\)//g')" \
        "libvelquor1 (= $version-1), libc6, libcairo2, libcpp-httplib0.11, libdxflib3, libgcc-s1, libglib2.0-0, libgmsh4.8, libpango-1.0-0, libpangocairo-1.0-0, libsqlite3-0, libstdc++6, libxxhash0"
    expect "the kit depends on" "$(dpkg-deb -f "$kit_development" Depends)" \
        "libvelquor-dev (= $version-1), libdxflib-dev, libgmsh-dev, libcairo2-dev, libpango1.0-dev"
fi
expect "its trigger" "$(dpkg-deb -I "$runtime" triggers)" "activate-noawait ldconfig"

# What they hold.
for package in "${packages[@]}"; do
    dpkg-deb -c "$package" >>"$scratch/list"
    dpkg -x "$package" "$scratch/tree"
done
expect "of another owner or mode" \
    "$(awk '$2 != "root/root" || $1 !~ ($6 == "./usr/bin/velquor" ? "^-rwxr-xr-x" : "^(drwxr-xr-x|-rw-r--r--|lrwxrwxrwx)")' \
        "$scratch/list")" ""
awk '$1 !~ /^d/ {print $6}' "$scratch/list" >"$scratch/files"
expect "in several packages" "$(sort "$scratch/files" | uniq -d)" ""
expect "the runtime package holds" "$(dpkg-deb -c "$runtime" | awk '$1 !~ /^d/ {print $6}' | sort | xargs)" \
    "$(printf "./$libdir/%s " libvelquor{-levels,}.so.{1,"$version"})./usr/share/doc/libvelquor1/copyright"
for file in usr/include/velquor{,_levels}.h "$libdir"/{libvelquor{,-levels}.so,pkgconfig/velquor{,-levels}.pc} \
    "$libdir/cmake/velquor/velquor-config.cmake" \
    usr/share/velquor/python/velquor/{{__init__,cluster,core,front,pictures,requests,results,workers}.py,py.typed} \
    usr/share/velquor/{python/example.py,fortran/velquor.f90,fortran/example.f90} \
    usr/share/doc/libvelquor-dev/{copyright,examples/ipe300.c}; do
    grep -qxF "./$file" "$scratch/files" || fail "no $file"
done
documents="libvelquor-dev libvelquor1"
if [ "$kit" = 1 ]; then
    documents="libvelquor-dev libvelquor-kit-dev libvelquor1 velquor"
    expect "the command's package holds" "$(dpkg-deb -c "$tools" | awk '$1 !~ /^d/ {print $6}' | sort | xargs)" \
        "$(printf './usr/%s ' bin/velquor share/doc/velquor/{copyright,examples/{handbook.py,sections/{encased.{dxf,json},many.jsonl,sweep.json,t_beam.json}}} \
            share/velquor/result.schema.json)./usr/share/velquor/section.schema.json"
    expect "not stripped" "$(readelf -SW "$scratch/tree/usr/bin/velquor" | grep -Eo ' \.(symtab|debug_info) ' || true)" ""
    expect "search paths" "$(readelf -dW "$scratch/tree/usr/bin/velquor" | grep -E 'R(UN)?PATH' || true)" ""
fi
expect "folders of documents" "$(cd "$scratch/tree/usr/share/doc" && echo *)" "$documents"
expect "with a path of the build" "$(grep -rlF -e "$source" -e "$build" "$scratch/tree" || true)" ""
libraries=("$scratch/tree/$libdir"/libvelquor{,-levels}".so.$version")
expect "not stripped" "$(readelf -SW "${libraries[@]}" | grep -Eo ' \.(symtab|debug_info) ' || true)" ""
expect "search paths" "$(readelf -dW "${libraries[@]}" | grep -E 'R(UN)?PATH' || true)" ""
"$tests/check_exports.sh" "${libraries[@]}"
"$tests/check_hardening.sh" "${libraries[@]}"

# Hosts: the tree stands where it was not built for, as a system root.
export PKG_CONFIG_SYSROOT_DIR=$scratch/tree PKG_CONFIG_LIBDIR=$scratch/tree/$libdir/pkgconfig
expect "version for pkg-config" "$(pkg-config --modversion velquor)" "$version"
grep -qF "set(PACKAGE_VERSION \"$version\")" "$scratch/tree/$libdir/cmake/velquor/velquor-config-version.cmake" ||
    fail "another version for CMake"
"$tests/package/build_hosts.sh" "$cmake" "$scratch/tree/usr" "$scratch/host"
"$tests/bindings/check_fortran.sh" "$scratch/tree/$libdir/libvelquor.so" \
    "$(pkg-config --variable=fortrandir velquor)/.."
LD_LIBRARY_PATH=$scratch/tree/$libdir "$python" -B "$(pkg-config --variable=pythondir velquor)/example.py"
[ "$kit" = 0 ] || [ "$(env -u VELQUOR_COMMAND LD_LIBRARY_PATH="$scratch/tree/$libdir" \
    PYTHONPATH="$(pkg-config --variable=pythondir velquor)" "$python" -B -c 'import velquor
print(velquor.section("IPE 300", values=["A"]))')" = "<velquor.Section 'IPE 300': A 5381.2 mm2>" ] ||
    fail "the package for Python, or the command beside it"
[ "$kit" = 0 ] || LD_LIBRARY_PATH=$scratch/tree/$libdir "$tests/package/build_kit_host.sh" "$cmake" "$scratch/tree/usr" \
    "$scratch/kit"

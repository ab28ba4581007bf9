#!/usr/bin/env bash
# Looks at the Debian packages that ./run package has built: what they say and hold; unpacks them into an empty tree, and
# builds and runs hosts in C, C++, Fortran and Python against that tree; asks man page and completion; compares what the
# command calculates with the same of another build, bit by bit.
#   check_debian.sh <folder of the packages> <source folder> [<the command of another build>]
set -euo pipefail
packages=$(realpath "$1") source=$(realpath "$2") other=${3:-}
tests=$source/tests
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "$1" >&2 && exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, expected: $3"; }

version=$(sed -n 's/^#define VQ_VERSION_.* //p' "$source/api/velquor.h" | xargs | tr ' ' .)
architecture=$(dpkg --print-architecture) libdir=usr/lib/$(gcc -print-multiarch)
declare -A file
for name in libvelquor1 libvelquor-dev velquor python3-velquor libvelquor-doc; do
    file[$name]=$packages/${name}_$version-1_$architecture.deb
    [[ $name != python3-* && $name != *-doc ]] || file[$name]=$packages/${name}_$version-1_all.deb
done
expect "packages" "$(ls "$packages"/*.deb | sort | xargs)" "$(printf '%s\n' "${file[@]}" | sort | xargs)"

# What the packages say.
depends() { dpkg-deb -f "${file[$1]}" Depends | sed -E 's/ \(>= [^)]*\)//g'; }
expect "the libraries depend on" "$(depends libvelquor1)" "libc6, libgcc-s1, libstdc++6"
expect "the development package depends on" "$(depends libvelquor-dev)" "libvelquor1 (= $version-1)"
expect "the command depends on" "$(depends velquor)" \
    "libc6, libcairo2, libcpp-httplib0.11, libdxflib3, libgcc-s1, libglib2.0-0, libgmsh4.8, libpango-1.0-0, libpangocairo-1.0-0, libsqlite3-0, libstdc++6, libvelquor1, libxxhash0"
expect "the package for Python depends on" "$(depends python3-velquor)" "libvelquor1, python3-numpy, velquor, python3:any"
expect "the documentation depends on" "$(depends libvelquor-doc)" ""
expect "symbols" "$(dpkg-deb -I "${file[libvelquor1]}" symbols | awk '/^ / {print $1, $2}' | xargs)" \
    "vq_check@Base 1.1.0 vq_levels@Base 1.1.0 vq_levels_watched@Base 1.1.0 vq_reason@Base 1.1.0 vq_velquor@Base 1.0.0"

# What they hold.
for name in "${!file[@]}"; do
    dpkg-deb -c "${file[$name]}" >>"$scratch/list"
    dpkg -x "${file[$name]}" "$scratch/tree"
done
tree=$scratch/tree
expect "of another owner or mode" \
    "$(awk '$2 != "root/root" || $1 !~ ($6 ~ /(bin\/velquor|handbook.py)$/ ? "^-rwxr-xr-x" : "^(drwxr-xr-x|-rw-r--r--|lrwxrwxrwx)")' \
        "$scratch/list")" ""
expect "in several packages" "$(awk '$1 !~ /^d/ {print $6}' "$scratch/list" | sort | uniq -d)" ""
held() { dpkg-deb -c "${file[$1]}" | awk -v not="^./usr/share/doc/$1/(changelog|copyright|NEWS)" '$1 !~ /^d/ && $6 !~ not {print $6}' |
    sed 's|^\./usr/||' | sort; }
listed() { printf '%s\n' "$@" | sort; }
lib=${libdir#usr/}
expect "the libraries' package holds" "$(held libvelquor1)" "$(listed "$lib"/libvelquor{,-levels}.so.{1,"$version"})"
expect "the command's package holds" "$(held velquor)" \
    "$(listed bin/velquor share/bash-completion/completions/velquor share/man/man1/velquor.1.gz \
        share/velquor/{catalogue,{section,result,request,answer}.schema}.json \
        $(cd "$source/examples" && printf 'share/doc/velquor/examples/%s ' *.py $(find sections -type f)))"
expect "the package for Python holds" "$(held python3-velquor)" "$(listed share/doc/python3-velquor/examples/example.py \
    $(cd "$source/bindings/python" && printf 'lib/python3/dist-packages/%s ' velquor/*.py velquor/py.typed))"
expect "the development package holds, besides the kit's headers" "$(held libvelquor-dev | grep -v ^include/velquor/kit/)" \
    "$(listed include/velquor{,_levels}.h "$lib"/libvelquor{.a,.so,-levels.a,-levels.so,-kit.a} \
        "$lib"/pkgconfig/velquor{,-levels,-kit}.pc share/velquor/fortran/{velquor,example}.f90 \
        "$lib"/cmake/velquor/velquor-{config,config-version,kit,{shared,static,kit}-targets{,-release}}.cmake \
        $(cd "$source" && printf 'share/doc/libvelquor-dev/%s ' examples/*.{c,h,cpp}))"
expect "headers of the kit" "$(held libvelquor-dev | grep -c ^include/velquor/kit/)" \
    "$(sed -n '/foreach(header/,/)/p' "$source/cmake/install_kit.cmake" | grep -c '\.h')"
expect "with a path of the build" "$(grep -rlF -e "$packages" "$tree" || true)" ""
built=("$tree/$libdir"/libvelquor{,-levels}".so.$version")
expect "not stripped" "$(readelf -SW "${built[@]}" "$tree/usr/bin/velquor" | grep -Eo ' \.(symtab|debug_info) ' || true)" ""
expect "search paths" "$(readelf -dW "${built[@]}" "$tree/usr/bin/velquor" | grep -E 'R(UN)?PATH' || true)" ""
names() { nm -g --defined-only "$tree/$libdir/$1" | awk 'NF == 3 {print $3}' | sort | xargs; }
expect "names for others" "$(names libvelquor.a)" vq_velquor
expect "names for others" "$(names libvelquor-levels.a)" "vq_check vq_levels vq_levels_watched vq_reason"
"$tests/check_exports.sh" "${built[@]}"
"$tests/check_hardening.sh" "${built[@]}"
python3 "$tests/docs/check_html.py" "$tree/usr/share/doc/libvelquor-doc/html"
expect "sources of pages" "$(find "$tree" -name '*.md*')" ""

# Hosts: the tree stands where it was not built for, as a system root.
export PKG_CONFIG_SYSROOT_DIR=$tree PKG_CONFIG_LIBDIR=$tree/$libdir/pkgconfig LD_LIBRARY_PATH=$tree/$libdir
"$tests/package/build_hosts.sh" cmake "$tree/usr" "$scratch/host"
"$tests/bindings/check_fortran.sh" "$tree/$libdir/libvelquor.so" "$(pkg-config --variable=fortrandir velquor)/.."
"$tests/package/build_kit_host.sh" cmake "$tree/usr" "$scratch/kit"
expect "the package for Python, the library and the command beside it" "$(cd / &&
    env -u VELQUOR_COMMAND -u VELQUOR_LIBRARY PYTHONPATH="$(pkg-config --variable=pythondir velquor)" /usr/bin/python3 -B -c '
import velquor
from velquor import core, places
core.load()
print(velquor.section("IPE 300", values=["A"]), places.find_command())')" \
    "<velquor.Section 'IPE 300': A 5381.2 mm2> $tree/usr/bin/velquor"

# What people ask.
"$tests/package/check_manual.sh" "$tree/usr"
if [ -n "$other" ]; then
    for what in "IPE 300" "$source/examples/sections/t_beam.json" "$source/examples/sections/encased.json"; do
        "$tree/usr/bin/velquor" calc "$what" --all --json >"$scratch/one" 2>"$scratch/notes"
        env -u LD_LIBRARY_PATH "$other" calc "$what" --all --json 2>"$scratch/notes" | cmp - "$scratch/one" || fail "$what: other bits than $other"
    done
    echo "the same bits as $other"
fi

#!/usr/bin/env bash
# Configures as on machines that lack something: tests are left out, or refused where they were asked for; without what is
# linked into the library there is none. Whatever is missing is told with the Debian package that holds it.
#   check_missing.sh <cmake> <source folder>
set -euo pipefail
cmake=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "$1, but: $told" >&2 && exit 1; }

configure() {
    local wanted=$1 outcome=succeeds
    shift
    rm -rf "$scratch/build"
    told=$("$cmake" -S "$source" -B "$scratch/build" "$@" 2>&1 | tr -s ' \n' ' ') || outcome=fails
    [ "$outcome" = "$wanted" ] || fail "$wanted"
}
expect() { [[ $told == *"$1"* ]] || fail "$1"; }

without=(-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON)
configure succeeds "${without[@]}"
expect "the unit tests are left out, for want of Debian's packages: libgtest-dev"
expect "the sections of the validation are left out, for want of Debian's packages: nlohmann-json3-dev"
configure fails "${without[@]}" -DVQ_BUILD_TESTS=ON
expect "the unit tests were asked for, and need Debian's packages: libgtest-dev"
expect "the sections of the validation were asked for, and need Debian's packages: nlohmann-json3-dev"

# The kit.
configure succeeds -DCMAKE_DISABLE_FIND_PACKAGE_valijson=ON -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON "-DCMAKE_IGNORE_PATH=/usr/include;/usr/include/dxflib"
expect "the kit is left out, for want of Debian's packages: libvalijson-dev libcli11-dev libgmsh-dev libdxflib-dev libsqlite3-dev libxxhash-dev"
configure fails -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON -DVQ_BUILD_KIT=ON
expect "the kit was asked for, and needs Debian's packages: libcli11-dev"
configure fails -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON -DVQ_BUILD_KIT=ON
expect "the kit was asked for, and needs Debian's packages: pkg-config libcairo2-dev libpango1.0-dev libcpp-httplib-dev"
configure succeeds -DVQ_BUILD_KIT=OFF
[[ $told != *"the kit"* ]] && ! grep -qi gmsh "$scratch/build/CMakeCache.txt" || fail "nothing is looked for that the kit needs"

configure fails "-DCMAKE_IGNORE_PREFIX_PATH=/;/usr;/usr/local"
expect "liblapack_pic.a, in Debian's package liblapack-dev"
expect "libblas.a of the reference BLAS, in Debian's package libblas-dev"
expect "libamd.a, in Debian's package libsuitesparse-dev"
expect "amd.h, in Debian's package libsuitesparse-dev"

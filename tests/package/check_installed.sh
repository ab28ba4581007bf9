#!/usr/bin/env bash
# Installs the Debian packages that ./run package has built in a bare Debian 12, uses them there as people do, with nothing
# set, purges them, and looks for what they leave behind. mmdebstrap makes that Debian, and removes it.
#   check_installed.sh <folder of the packages>
set -euo pipefail
packages=$(realpath "$1")
use=$(mktemp)
trap 'rm -f "$use"' EXIT
cat >"$use" <<'USE'
set -eu
fail() { echo "$1" >&2; exit 1; }
cd /tmp
echo "as a command"
velquor calc "IPE 300" --units cm | grep -q '^  A  *53.81202 ' || fail "another area"
velquor draw "IPE 300" -o ipe300.svg && velquor report "IPE 300" --load "My=10kNm" -o ipe300.pdf
velquor batch /usr/share/doc/velquor/examples/sections/many.jsonl -o many.sqlite --quiet
man --warnings velquor 2>&1 >man.txt | { ! grep .; } || fail "the man page"
grep -q "velquor calc" man.txt || fail "no man page"
bash -c '. /usr/share/bash-completion/bash_completion; . /usr/share/bash-completion/completions/velquor
    COMP_WORDS=(velquor cal) COMP_CWORD=1 COMP_LINE="velquor cal" COMP_POINT=11
    $(complete -p velquor | sed -E "s/.*-F ([^ ]+).*/\1/"); [ "${COMPREPLY[*]% }" = calc ]' || fail "completion"
echo "from Python"
python3 -c 'import velquor; print(velquor.section("IPE 300").It)' | grep -q '^1975' || fail "another It"
python3 -c 'from velquor import core
print(core.calculate([(0, 0), (2, 0), (2, 4), (0, 4)], [(1, 2, 3, 4)], core.property_table(1, EMOD=1, GMOD=1)).EA)' |
    grep -qx 8.0 || fail "another EA"
echo "from C and C++"
cp -r /usr/share/doc/libvelquor-dev/examples .
cc examples/bounds.c $(pkg-config --cflags --libs velquor-levels) -lm -o shared && ./shared >told
cc examples/bounds.c $(pkg-config --static --cflags --libs velquor-levels) -lm -o static && ./static | cmp - told ||
    fail "the static libraries"
printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(host CXX)' 'find_package(velquor 1.1 REQUIRED COMPONENTS kit)' \
    'add_executable(host examples/section.cpp)' 'target_link_libraries(host PRIVATE velquor::kit)' >CMakeLists.txt
cmake -B build >/dev/null && cmake --build build >/dev/null && build/host
[ -e /usr/share/doc/libvelquor-doc/html/index.html ] || fail "no pages"
dpkg --purge $(dpkg-query -W -f='${Package}\n' | grep velquor) >/dev/null
left=$(find / -xdev -iname '*velquor*' -not -path '/tmp/*' -not -path '/proc/*' -not -path '/sys/*')
[ -z "$left" ] || fail "left behind: $left"
echo "nothing left behind"
USE
include=man-db,bash-completion,g++,cmake,make,pkg-config,libgmsh-dev,libdxflib-dev,libcairo2-dev,libpango1.0-dev,libglib2.0-dev
for package in "$packages"/*.deb; do include+=,$package; done
mmdebstrap --quiet --variant=apt --format=null --include="$include" --dpkgopt=path-include=/usr/share/doc/* \
    --hook-dir=/usr/share/mmdebstrap/hooks/file-mirror-automount \
    --customize-hook="copy-in $use /root" --customize-hook="chroot \"\$1\" sh /root/$(basename "$use")" \
    bookworm /dev/null

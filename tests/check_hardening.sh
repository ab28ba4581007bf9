#!/usr/bin/env bash
# The libraries are mapped and linked as safely as the platform allows, search beside themselves at most, and need the
# language runtimes alone, and one the other.
#   check_hardening.sh <library>...
set -euo pipefail
fail() { echo "$library: $1" >&2 && exit 1; }
for library; do
    dynamic=$(readelf -dW "$library") segments=$(readelf -lW "$library") symbols=$(readelf --dyn-syms -W "$library")
    grep -q 'GNU_RELRO' <<<"$segments" && grep -Eq '\bNOW\b' <<<"$dynamic" || fail "relocations stay writable"
    ! grep -q 'TEXTREL' <<<"$dynamic" || fail "relocations in the text"
    grep -Eq 'GNU_STACK .* RW +0x' <<<"$segments" || fail "executable stack"
    ! grep -Eq 'LOAD .* (RWE|WE) ' <<<"$segments" || fail "a segment both writable and executable"
    ! grep -E 'R(UN)?PATH' <<<"$dynamic" | grep -vF '[$ORIGIN]' || fail "a search path"
    grep -q ' __stack_chk_fail' <<<"$symbols" || fail "no stack protector"
    [[ $library == *levels* ]] || grep -Eq ' __[a-z]+_chk(@| |$)' <<<"$symbols" || fail "no fortified calls"
    needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
    echo "needed:" $needed
    foreign=$(grep -Evx 'lib(c|m|stdc\+\+|gcc_s|velquor)\.so\.[0-9]+|ld-linux.*' <<<"$needed" || true)
    [ -z "$foreign" ] || fail "foreign libraries: $foreign"
done

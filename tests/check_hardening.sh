#!/usr/bin/env bash
# The library is mapped and linked as safely as the platform allows, and needs the language runtimes alone.
set -euo pipefail
dynamic=$(readelf -dW "$1") segments=$(readelf -lW "$1") symbols=$(readelf --dyn-syms -W "$1")
fail() { echo "$1" >&2 && exit 1; }
grep -q 'GNU_RELRO' <<<"$segments" && grep -Eq '\bNOW\b' <<<"$dynamic" || fail "relocations stay writable"
! grep -q 'TEXTREL' <<<"$dynamic" || fail "relocations in the text"
grep -Eq 'GNU_STACK .* RW +0x' <<<"$segments" || fail "executable stack"
! grep -Eq 'LOAD .* (RWE|WE) ' <<<"$segments" || fail "a segment both writable and executable"
! grep -Eq 'R(UN)?PATH' <<<"$dynamic" || fail "a search path"
grep -q ' __stack_chk_fail' <<<"$symbols" || fail "no stack protector"
grep -Eq ' __[a-z]+_chk(@| |$)' <<<"$symbols" || fail "no fortified calls"
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
echo "needed:" $needed
foreign=$(grep -Evx 'lib(c|m|stdc\+\+|gcc_s)\.so\.[0-9]+|ld-linux.*' <<<"$needed" || true)
[ -z "$foreign" ] || fail "foreign libraries: $foreign"

#!/usr/bin/env bash
# The man page that is installed under a prefix: without warnings, and with each command; the completion: commands, options
# and what may stand behind them; and the documents for programs: what the command itself tells.
#   check_manual.sh <prefix>
set -euo pipefail
prefix=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "$1" >&2 && exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: $2, expected: $3"; }
commands=$("$prefix/bin/velquor" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ "$(wc -w <<<"$commands")" -gt 5 ] || fail "the commands: $commands"

page=$(echo "$prefix"/share/man/man1/velquor.1*)
LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" >"$scratch/page" 2>"$scratch/warnings"
expect "warnings of the man page" "$(cat "$scratch/warnings")" ""
for command in $commands; do
    grep -q "^   velquor $command" "$scratch/page" || fail "the man page has nothing of velquor $command"
    for option in $("$prefix/bin/velquor" "$command" --help | grep -oE '^  (-o,)?--[a-z]+' | tr -d ' '); do
        [ "$option" = --help ] || grep -qF -- "$option" "$scratch/page" || fail "the man page has no $option of $command"
    done
done
expect "the man page's beginning" "$(sed -n '1p' "$scratch/page" | xargs)" "VELQUOR(1) User Commands VELQUOR(1)"

# complete <words>...: what the last of them may become.
PATH=$prefix/bin:$PATH
source "$prefix/share/bash-completion/completions/velquor"
complete_words() {
    COMP_WORDS=(velquor "$@") COMP_CWORD=$#
    compopt() { :; }
    _velquor velquor "${@: -1}" "${COMP_WORDS[COMP_CWORD - 1]}"
    printf '%s\n' "${COMPREPLY[@]}" | sort | xargs -d '\n'
}
cd "$scratch"
touch "own file.json"
expect "commands" "$(complete_words '')" "$(sort <<<"$commands" | xargs)"
expect "a command" "$(complete_words cal)" calc
expect "options of calc" "$(complete_words calc --un)" --units
expect "options of schema" "$(complete_words schema --)" "--answer --help --request --result"
expect "units" "$(complete_words calc --units '')" "cm dm ft in m mm"
expect "fields" "$(complete_words draw --field '')" "axial mesh mises outline shear warping"
expect "shapes" "$(complete_words calc --shape hollow)" hollow_rectangle
expect "parameters of a shape" "$(complete_words calc --shape circle --d)" "--d --density"
expect "names of profiles" "$(complete_words calc '"ipe 30')" "IPE 300"
expect "names of profiles" "$(complete_words calc 'HEB\ 10')" "HEB 100 HEB 1000"
expect "files" "$(complete_words calc ow)" "own file.json"
expect "files alone" "$(complete_words check 'IP')" ""
expect "files" "$(complete_words calc --materials 'own\ ')" "own file.json"

for which in section result request answer; do
    "$prefix/bin/velquor" schema $([ $which = section ] || echo --$which) >"$scratch/told"
    cmp "$scratch/told" "$prefix/share/velquor/$which.schema.json" || fail "not the schema of a $which"
done
"$prefix/bin/velquor" catalogue | cmp - "$prefix/share/velquor/catalogue.json" || fail "not the catalogue"

"""The man page of the command velquor, and its completion for bash, from the help that it prints.

    manual.py <velquor> <man page> <completion>
"""
import re
import subprocess
import sys
from pathlib import Path


def ask(*words):
    return subprocess.run([sys.argv[1], *words], check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout


def read(help_text):
    """About, usage, {heading: [(names, description)]}, and the paragraphs at the end."""
    about, usage, *rest = help_text.rstrip().split("\n")
    groups, paragraphs, group = {}, [], None
    for line in rest:
        entry = re.match(r"  (\S.*?)(?:\s{2,}(.*))?$", line)
        if line.endswith(":") and line[0] != " ":
            group = groups.setdefault(line[:-1], [])
        elif line.startswith(" " * 26) and group:  # of a long name
            group[-1] = (group[-1][0], f"{group[-1][1]} {line.strip()}".strip())
        elif entry and group is not None:
            group.append((entry[1], entry[2] or ""))
        elif not line:
            group = None
            paragraphs.append([])
        else:
            paragraphs[-1].append(line)
    return about, usage.removeprefix("Usage: "), groups, [lines for lines in paragraphs if lines]


pages = {(): read(ask("--help"))}
for name, _ in pages[()][2]["Subcommands"]:
    pages[name,] = read(ask(name, "--help"))
version, *licence = ask("--version").rstrip().split("\n")


# The man page.
def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace('"', "\\(dq").replace("~", "\\(ti")
    return re.sub(r"^\.", r"\\&.", text, flags=re.MULTILINE)


def entries(groups):
    for heading, listed in groups.items():
        if heading not in ("Options", "Positionals", "Subcommands"):
            yield f".PP\n{roff(heading)}:"
        for names, text in listed:
            if names != "-h,--help":
                names = re.sub(r" (REQUIRED|Excludes: \S+)", "", names)
                yield f".TP\n.B {roff(names)}\n{roff(text)}"


def footer(paragraphs):
    for lines in paragraphs:
        label, colon, first = lines[0].partition(": ")
        if label in ("Example", "Examples"):
            yield "\n".join([".PP", f"{label}:", ".PP", ".nf", ".RS", *(roff(line.strip()) for line in [first, *lines[1:]]),
                             ".RE", ".fi"])
        else:
            yield ".PP\n" + roff("\n".join(lines))


about, usage, groups, paragraphs = pages[()]
status = [lines for lines in paragraphs if lines[0].startswith("Exit status: ")]
rest = [lines for lines in paragraphs if lines not in status]
man = [f'.TH VELQUOR 1 "" "{version}" "User Commands"', ".SH NAME",
       f"velquor \\- {roff(about[0].lower() + about[1:].rstrip('.'))}", ".SH SYNOPSIS", f".B {roff(usage)}",
       ".SH DESCRIPTION", roff(about), ".PP", "What follows is told by", ".B velquor \\-\\-help", "and, of each command, by",
       ".BR \"velquor COMMAND \\-\\-help\" .", ".SH OPTIONS", *entries({"Options": groups["Options"]}), ".SH COMMANDS",
       *entries({"Subcommands": groups["Subcommands"]})]
for name, (about, usage, groups, paragraphs) in pages.items():
    if name:
        man += [f".SS {roff(usage)}", roff(about[0].upper() + about[1:] + "."), *entries(groups), *footer(paragraphs)]
if status:
    man += [".SH EXIT STATUS", roff("\n".join(status[0]).removeprefix("Exit status: "))]
man += [".SH EXAMPLES", *footer(rest), ".SH COPYRIGHT", roff("\n".join(licence)), ".SH SEE ALSO",
        "The documentation, where Debian\\(aqs package libvelquor\\-doc is installed:",
        ".I /usr/share/doc/libvelquor\\-doc/html/index.html"]
Path(sys.argv[2]).write_text("\n".join(man) + "\n", encoding="utf-8")


# The completion: of each command its options, and of each option and place what may stand there: "files", "profiles",
# "shapes", or words.
def what_follows(command, names, text):
    kind = (re.findall(r" ([A-Z]+)\b", names.replace(" REQUIRED", "")) or [""])[0]
    if not names.startswith("-"):
        kind = "profiles" if "profile" in text or command == "profiles" else "shapes" if "shape" in text else "files"
    elif kind in ("FILE", "FOLDER"):
        kind = "files"
    elif kind == "NAME" and "shape" in text:
        kind = "shapes"
    elif kind in ("UNIT", "FIELD"):  # told one by one
        kind = " ".join(re.findall(r"\b[a-zA-Z]+\b", re.sub(r", with .*|.*: ", "", text).replace(" or ", " ")))
    return kind if kind and not kind.isupper() else "nothing"


cases = []
for name, (about, usage, groups, _) in pages.items():
    for names, text in [entry for heading, listed in groups.items() if heading != "Subcommands" for entry in listed]:
        takes_none = names.startswith("-") and " " not in re.sub(r" (REQUIRED|Excludes: \S+)", "", names)
        if not takes_none:
            places = names.split()[0].replace(",", "|") if names.startswith("-") else ""
            pattern = "|".join(f"'{''.join(name)} {place}'" for place in places.split("|"))
            cases.append(f"    {pattern}) echo {what_follows(''.join(name), names, text)} ;;")
options = {"".join(name): " ".join(option for listed in page[2].values() for names, _ in listed
                                   for option in re.findall(r"--[\w-]+", re.sub(r"Excludes: \S+", "", names)))
           for name, page in pages.items()}
commands = " ".join(name for name, _ in pages[()][2]["Subcommands"])
Path(sys.argv[3]).write_text(r"""# Completion of velquor for bash. Names of profiles and shapes, and parameters of these, are asked of the command.
_velquor_options() {
    case "$1" in
@OPTIONS@
    esac
}
_velquor_follows() {  # what stands behind an option of a command, or without one at its end
    case "$1 $2" in
@FOLLOWS@
    esac
}
_velquor() {
    local word=${2//\\/} previous=${3//\\/} command='' shape='' kind='' names='' name files k
    word=${word#[\"\']}
    COMPREPLY=()
    for ((k = 1; k < COMP_CWORD; ++k)); do
        [ -n "$command" ] || [[ ${COMP_WORDS[k]} == -* ]] || command=${COMP_WORDS[k]}
        [ "${COMP_WORDS[k]}" != --shape ] || shape=${COMP_WORDS[k + 1]}
    done
    [[ $previous != -* ]] || kind=$(_velquor_follows "$command" "$previous")
    if [ -z "$kind" ] && [[ $word == -* ]]; then
        kind=$(_velquor_options "$command")
        [ -z "$shape" ] || kind+=" $("$1" shapes "$shape" 2>/dev/null | sed -n 's/^  --\([^ ]*\).*/--\1/p' | tr '\n' ' ')"
    elif [ -z "$command" ]; then
        kind="@COMMANDS@"
    elif [ -z "$kind" ]; then
        kind=$(_velquor_follows "$command" '')
    fi
    case "$kind" in
    nothing) return ;;
    files | profiles) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    esac
    files=${#COMPREPLY[@]}
    case "$kind" in
    files) ;;
    profiles) names=$("$1" profiles "$word" 2>/dev/null) ;;
    shapes) names=$("$1" shapes 2>/dev/null) ;;
    *) names=${kind// /$'\n'} ;;
    esac
    while read -r name; do
        name=${name%%  *}
        [[ -z $name || ${name,,} != "${word,,}"* ]] || COMPREPLY+=("$name")
    done <<<"$names"
    # As names of files blanks are escaped, and folders end in a slash; profiles are not shown without what is before theirs.
    [ "$kind" = files ] || { [ "$kind" = profiles ] && [[ $files -gt 0 || ${COMPREPLY[*]} != */* ]]; } || return 0
    compopt -o filenames
}
complete -F _velquor velquor
""".replace("@COMMANDS@", commands).replace("@FOLLOWS@", "\n".join(cases)).replace(
    "@OPTIONS@", "\n".join(f"    '{name}') echo {text} ;;" for name, text in options.items())), encoding="utf-8")

#!/usr/bin/env bash
# What a person reads of a program besides its output: help, version, manual page, completion.
#     check-programs.sh PROGRAM MANUAL-PAGE COMPLETION
set -euo pipefail
program=$1 page=$2 completion=$3
name=${program##*/}

fail() {
    echo "$name: $*" >&2
    exit 1
}

# fits WHAT: what comes in has lines of 80 columns at most, and neither colours nor other control characters
fits() {
    local text
    text=$(cat)
    [ -n "$text" ] || fail "$1 is empty"
    [ -z "$(grep -E '.{81}' <<<"$text")" ] || fail "$1 is wider than 80 columns: $(grep -E '.{81}' <<<"$text" | head -n 1)"
    ! grep -q '[[:cntrl:]]' <<<"$text" || fail "$1 has control characters"
}

"$program" --help | fits --help
"$program" --version | fits --version
"$program" --version | grep -qE '^Qt 5\.15\.[0-9]+, built with 5\.15\.[0-9]+$' || fail "--version does not tell Qt's"
mapfile -t commands < <("$program" --help | sed -n 's/^  \([a-z][a-z-]*\) .*/\1/p')
if [ "$name" = planviewer ]; then
    [ ${#commands[@]} -eq 0 ] || fail "--help lists ${#commands[@]} commands"
else
    [ ${#commands[@]} -ge 4 ] || fail "--help lists ${#commands[@]} commands"
fi

warnings=$(groff -Kutf8 -man -Tutf8 -ww -z "$page" 2>&1) || true
[ -z "$warnings" ] || fail "the manual page: $warnings"
manual=$(groff -Kutf8 -man -Tutf8 -P-cbou -rLL=80n "$page" | sed 's/.\x08//g')
fits "the manual page" <<<"$manual"
# in_manual WHAT TEXT: each line of the text stands in the manual page
in_manual() {
    local lacking
    lacking=$(sed 's/^ *//' <<<"$2" | grep -vxFf <(sed 's/^ *//' <<<"$manual")) || true
    [ -z "$lacking" ] || fail "the manual page lacks of $1: $lacking"
}
declare -A help
for command in "${commands[@]}"; do
    help[$command]=$("$program" "$command" --help)
    fits "$command --help" <<<"${help[$command]}"
    in_manual "$command" "${help[$command]}"
done

# complete WORD...: what the shell offers for the last word
complete_words() {
    COMP_WORDS=("$name" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _kvplan "$program" "${*: -1}" "${COMP_WORDS[$#]}"
    echo "${COMPREPLY[*]}"
}
source "$completion"
for command in "${commands[@]}"; do
    [[ " $(complete_words "$command") " == *" $command "* ]] || fail "$command is not completed"
    options=$(complete_words "$command" --)
    [[ " $options " == *" --help "* ]] || fail "the options of $command are not completed but \"$options\""
    for option in $options; do
        [[ "${help[$command]}" == *"$option"* ]] || fail "$command has no option $option"
    done
    for option in $(grep -oE '^  (-[a-zA-Z], )?--[a-z-]+' <<<"${help[$command]}" | grep -oE -- '--[a-z-]+'); do
        [[ " $options " == *" $option "* ]] || fail "$option of $command is not completed"
    done
done
if [ ${#commands[@]} -eq 0 ]; then
    overview=$("$program" --help | sed -n '/^Options:/,$p' | sed 1d)
    in_manual --help "$overview"
    options=" $(complete_words --) "
    for option in $(grep -oE '^  (-[a-zA-Z], )?--[a-z-]+' <<<"$overview" | grep -oE -- '--[a-z-]+'); do
        [[ "$options" == *" $option "* ]] || fail "$option is not completed but \"$options\""
    done
fi
[ "$(complete_words --vers)" = --version ] || fail "--version is not completed"
[ -z "$(complete_words "${commands[0]:---plan}" no-such)" ] || fail "something is offered where files are to be"

#!/usr/bin/env bash
# The completion script that 'exampledoc completion bash' prints, loaded into bash as
# bash-completion loads it: each case is the words offered for the last, unfinished word.
# usage: completion_test.sh EXAMPLEDOC
set -uo pipefail
source /usr/share/bash-completion/bash_completion
source <("$1" completion bash) || exit 1

failed=0
expect() {
    local offered=$1
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMP_LINE="$*"
    COMP_POINT=${#COMP_LINE}
    COMPREPLY=()
    _exampledoc
    if [[ "${COMPREPLY[*]}" != "$offered" ]]; then
        echo "'$*': offered '${COMPREPLY[*]}', expected '$offered'"
        failed=1
    fi
}

expect "check coverage completion" exampledoc c
expect "--version" exampledoc --v
expect "--format" exampledoc check --f
expect "--kind" exampledoc list --json --k
expect "text json sarif" exampledoc check --format ""
expect "text json" exampledoc coverage --format=
expect "Live_Script" exampledoc list --kind L
expect "ja_JP" exampledoc show --locale ja
expect "always" exampledoc preview --color al
expect "" exampledoc list --folder ""
expect "preview" exampledoc help p
expect "bash" exampledoc completion ""
exit $failed

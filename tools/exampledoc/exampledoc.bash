# bash completion for exampledoc: commands, their options, and the values options take.

_exampledoc() {
    local cur prev words cword
    _init_completion -s || return

    local commands="check coverage help list preview schema show"
    local command="" i
    for ((i = 1; i < cword; i++)); do
        case "${words[i]}" in
            -*) ;;
            *) command="${words[i]}"; break ;;
        esac
    done

    if [[ -z $command ]]; then
        COMPREPLY=($(compgen -W "$commands --help --version" -- "$cur"))
        return
    fi

    case "$prev" in
        --root | --out) _filedir -d; return ;;
        --locale) COMPREPLY=($(compgen -W "en_US ja_JP ko_KR zh_CN" -- "$cur")); return ;;
        --color) COMPREPLY=($(compgen -W "auto always never" -- "$cur")); return ;;
        --kind) COMPREPLY=($(compgen -W "Live_Script Script Model Example Chart App Unknown" -- "$cur")); return ;;
        --format)
            if [[ $command == check ]]; then
                COMPREPLY=($(compgen -W "text json sarif" -- "$cur"))
            else
                COMPREPLY=($(compgen -W "text json" -- "$cur"))
            fi
            return ;;
        --of) COMPREPLY=($(compgen -W "catalogue list check coverage" -- "$cur")); return ;;
        --folder) return ;;
    esac
    $split && return

    local opts
    case "$command" in
        list) opts="--help --root --locale --color --json --folder --kind" ;;
        show) opts="--help --root --locale --color" ;;
        check) opts="--help --root --locale --color --format --strict" ;;
        coverage) opts="--help --root --locale --color --format" ;;
        schema) opts="--help --root --locale --color --of" ;;
        preview) opts="--help --root --locale --color --out --force" ;;
        help) COMPREPLY=($(compgen -W "list show check coverage schema preview" -- "$cur")); return ;;
        *) return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$opts" -- "$cur"))
        [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
    fi
} &&
    complete -F _exampledoc exampledoc

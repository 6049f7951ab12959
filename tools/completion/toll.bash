# bash completion of toll

_toll() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # bash cuts a word at '='.
    if [ "$word" = = ]; then word=''; elif [ "$before" = = ]; then before=${COMP_WORDS[COMP_CWORD - 2]}; fi
    case $before in
        --target) mapfile -t COMPREPLY < <(compgen -W 'kob c java' -- "$word"); return ;;
        --diagnostics) mapfile -t COMPREPLY < <(compgen -W 'text gcc json sarif' -- "$word"); return ;;
        --color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$word"); return ;;
        --list-sections) mapfile -t COMPREPLY < <(compgen -W 'full' -- "$word"); return ;;
        -I | --include) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
        -o | --output | --tree-graph | --dependencies | -MF) mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
        -D | --define | -j | --jobs) return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-o --output= --target= -I --include= -D --define= -g --debug -l --line-codes -b --check-bounds
            --private-symbols --strict --warn-assignment --no-error-limit --progress --list-sections
            --print-scopes --print-blocks -n --no-output --tree-graph --dependencies -MD -MF -j --jobs= --diagnostics=
            --color= --help --version' -- "$word")
        [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -X '!*.tl' -- "$word"; compgen -d -- "$word")
}
complete -o filenames -F _toll toll

# bash completion of ostrum

_ostrum() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # bash cuts a word at '='.
    if [ "$word" = = ]; then word=''; elif [ "$before" = = ]; then before=${COMP_WORDS[COMP_CWORD - 2]}; fi
    case $before in
        -c | --command)
            mapfile -t COMPREPLY < <(compgen -W 'compile list show convert search set help' -- "$word")
            return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-c --command= -e --echo --help --version' -- "$word")
        [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -X '!*.com' -- "$word"; compgen -d -- "$word")
}
complete -o filenames -F _ostrum ostrum

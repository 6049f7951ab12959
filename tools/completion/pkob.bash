# bash completion of pkob

_pkob() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # bash cuts a word at '='.
    if [ "$word" = = ]; then word=''; elif [ "$before" = = ]; then before=${COMP_WORDS[COMP_CWORD - 2]}; fi
    case $before in
        -s | --symbol | --data) return ;;
        --svg)
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-H --header -t --static-offsets -y --symbols -f --frames -c --code
            -x --image -a --all -s --symbol= --data --help-screens --svg= --json --help --version' -- "$word")
        [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -X '!*.kob' -- "$word"; compgen -d -- "$word")
}
complete -o filenames -F _pkob pkob

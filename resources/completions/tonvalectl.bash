# Completion of tonvalectl for bash.

_tonvalectl_names() {
    local name quoted
    while IFS= read -r name; do
        [[ ${name,,} == "${typed,,}"* ]] || continue
        if [[ $open_quote ]]; then
            quoted=$name
        else
            printf -v quoted %q "$name"
        fi
        COMPREPLY+=("$quoted")
    done < <(tonvalectl list --names "$@" 2>/dev/null)
}

_tonvalectl() {
    local typed=${COMP_WORDS[COMP_CWORD]} open_quote='' command='' word position=0
    COMPREPLY=()
    if [[ $typed == [\"\']* ]]; then
        open_quote=${typed:0:1}
        typed=${typed:1}
    else
        typed=${typed//\\/}
    fi
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* && ! $word == -[0-9]* ]] && continue
        [[ $command ]] || command=$word
        ((++position))
    done
    if [[ $typed == -* ]]; then
        case $command in
        list) word='--all --ignored --json --names' ;;
        get | monitor) word=--json ;;
        '') word='--help --version' ;;
        *) word= ;;
        esac
        COMPREPLY=($(compgen -W "$word" -- "$typed"))
        return
    fi
    case $command:$position in
    :0)
        COMPREPLY=($(compgen -W 'list get set reset mute unmute toggle ignore unignore forget
            default show monitor' -- "$typed"))
        ;;
    unignore:1) _tonvalectl_names --ignored ;;
    get:1 | set:1 | reset:1 | mute:1 | unmute:1 | toggle:1 | ignore:1 | forget:1)
        _tonvalectl_names --all
        ;;
    set:2) COMPREPLY=($(compgen -W '0% 25% 50% 75% 100% +5% -5%' -- "$typed")) ;;
    default:1) COMPREPLY=($(compgen -W 'off 25% 50% 75% 100%' -- "$typed")) ;;
    esac
}

complete -F _tonvalectl tonvalectl

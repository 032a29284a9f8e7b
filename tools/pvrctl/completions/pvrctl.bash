# Completion of pvrctl for bash, with bash-completion: pvrctl itself tells what may stand there.
_pvrctl() {
    local cur words cword line word before='' value files=''
    _get_comp_words_by_ref -n =: cur words cword || return
    case $cur in -*=*) before=${cur%%=*}= ;; esac
    value=${cur#"$before"}
    COMPREPLY=()
    while IFS= read -r line; do
        word=${line%%$'\t'*}
        case $line in
        :files) files=-f ;;
        :folders) files=-d ;;
        *) COMPREPLY+=("${word#"$before"}") ;;
        esac
    done < <("${1/#\~/$HOME}" complete -- "${words[@]:1:cword}" 2>/dev/null)
    if [ -n "$files" ]; then
        compopt -o filenames
        while IFS= read -r word; do
            COMPREPLY+=("$word")
        done < <(compgen "$files" -- "$value")
    fi
    __ltrim_colon_completions "$value"
    case ${#COMPREPLY[@]},${COMPREPLY[0]-} in 1,*=) compopt -o nospace ;; esac
}
complete -F _pvrctl pvrctl

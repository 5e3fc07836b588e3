# Made by scripts/completions. Readline itself completes files, also behind an equals sign. Bash 3.2 reads this too.
_zan() {
  COMPREPLY=()
  local word=$2 found
  [[ $word == /* ]] && word=$(printf %s "$word" | tr '[:lower:]' '[:upper:]')
  [[ $3 != -command && ($word == -* || $word == /?*) ]] || return
  while IFS= read -r found; do
    COMPREPLY+=("$found")
  done < <(compgen -W '-command -command= -output= /OUTPUT= -readonly /READ_ONLY /READONLY -recover /RECOVER -journal= /JOURNAL= -d -k /DEBUG /DEBUG_KEYS -h --help /?' -- "$word")
  [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
}
complete -o default -F _zan zan

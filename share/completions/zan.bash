# Made by scripts/completions. Readline itself completes files, also behind an equals sign.
_zan() {
  COMPREPLY=()
  local word=$2
  [[ $word == /* ]] && word=${word^^}
  [[ $3 != -command && ($word == -* || $word == /?*) ]] || return
  mapfile -t COMPREPLY < <(compgen -W '-command -command= -output= /OUTPUT= -readonly /READ_ONLY /READONLY -recover /RECOVER -journal= /JOURNAL= -d -k /DEBUG /DEBUG_KEYS -h --help /?' -- "$word")
  [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace
}
complete -o default -F _zan zan

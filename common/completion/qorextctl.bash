# Completion for bash: source it, or put it where bash-completion looks, under both names.
#
# The programs print the candidates themselves, so the names are those of the installed versions.

_qorextctl() {
  local line=${COMP_LINE:0:COMP_POINT} words word front candidate
  local -a candidates
  COMPREPLY=()
  # Not COMP_WORDS: bash also splits words at = and :.
  read -ra words <<<"$line"
  [[ $line == *[[:blank:]] ]] && words+=('')
  word=${words[-1]}
  mapfile -t candidates < <("${words[0]/#\~/$HOME}" complete "${words[@]:1}" 2>/dev/null)
  front=$word
  [[ $word == *[=:]* ]] && front=${word%"${word##*[=:]}"} || front=
  for candidate in "${candidates[@]}"; do
    candidate=${candidate%%$'\t'*}
    if [[ $candidate == :files ]]; then
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "${word#"$front"}")
      return
    fi
    COMPREPLY+=("${candidate#"$front"}")
  done
  # More text follows these.
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *[=/.:] ]] && compopt -o nospace 2>/dev/null
  return 0
}

complete -F _qorextctl qorextctl qorext_modem

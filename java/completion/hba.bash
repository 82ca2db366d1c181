# Completion of hba for bash. The tool itself knows what may follow; it answers with a candidate and what that is.
_hba() {
  local current=${COMP_WORDS[COMP_CWORD]} words=() i candidate what
  # bash parts words at = and :, which are part of options and of iSCSI names.
  for ((i = 1; i <= COMP_CWORD; i++)); do
    if ((i > 1)) && [[ ${COMP_WORDS[i]} == [=:] || ${COMP_WORDS[i - 1]} == [=:] ]]; then
      words[-1]+=${COMP_WORDS[i]}
    else
      words+=("${COMP_WORDS[i]}")
    fi
  done
  [[ $current != [=:] ]] || current=
  # What bash leaves standing before the part that it replaces.
  local before=${words[-1]%"$current"}
  COMPREPLY=()
  while IFS=$'\t' read -r candidate _; do
    case $candidate in
      :files)
        compopt -o filenames
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
        ;;
      :folders)
        compopt -o filenames
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$current")
        ;;
      *)
        [[ $candidate != *= ]] || compopt -o nospace
        COMPREPLY+=("${candidate#"$before"}")
        ;;
    esac
  done < <("${COMP_WORDS[0]/#\~/$HOME}" __complete "${words[@]}" 2>/dev/null)
}
complete -F _hba hba

#compdef hba
# Completion of hba for zsh. The tool itself knows what may follow; it answers with a candidate and what that is.
_hba() {
  local candidate what files=
  local -a complete open complete_shown open_shown
  while IFS=$'\t' read -r candidate what; do
    case $candidate in
      :files | :folders) files=$candidate ;;
      *=)
        open+=("$candidate")
        open_shown+=("$candidate  -- $what")
        ;;
      *)
        complete+=("$candidate")
        complete_shown+=("$candidate  -- $what")
        ;;
    esac
  done < <(${~words[1]} __complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)
  compadd -l -d complete_shown -a complete
  compadd -l -S '' -d open_shown -a open
  if [[ -n $files ]]; then
    compset -P '--*='
    if [[ $files == :folders ]]; then
      _files -/
    else
      _files
    fi
  fi
}
if [[ ${funcstack[1]} == _hba ]]; then
  _hba "$@"
else
  compdef _hba hba
fi

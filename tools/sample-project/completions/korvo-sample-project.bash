# Completion of korvo-sample-project for bash.

_korvo_sample_project() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  local options='--seed --sections --pictures --videos --video-size --scan-size --list-node-media --force --help'
  COMPREPLY=()

  case "$previous" in
    --seed | --sections | --pictures | --videos | --video-size | --scan-size) return ;;
  esac
  if [[ "$current" == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$current")
  fi
}

complete -F _korvo_sample_project korvo-sample-project

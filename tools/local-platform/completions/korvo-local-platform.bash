# Completion of korvo-local-platform for bash.

_korvo_local_platform() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  local options='--data --port --proxy-port --listen --account --fault --clock-skew --service-url --web-copies --no-sync'
  options+=' --exit-with-stdin --help'
  COMPREPLY=()

  case "$previous" in
    --data) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    --web-copies) mapfile -t COMPREPLY < <(compgen -W 'same lower both none' -- "$current") ;;
    --port | --proxy-port | --listen | --account | --fault | --clock-skew | --service-url) ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current") ;;
  esac
}

complete -F _korvo_local_platform korvo-local-platform

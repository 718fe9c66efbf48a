# Completion of korvoweb for bash.

_korvoweb_command() {
  local i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case "${COMP_WORDS[i]}" in
      --user | --proxy | --ca | --stall-timeout | --id | --name | --created | --kind | --jobs | --manhole-media) ((i++)) ;;
      -*) ;;
      *) printf '%s %s' "${COMP_WORDS[i]}" "$((COMP_CWORD - i))"; return ;;
    esac
  done
}

_korvoweb() {
  local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  local commands='login projects upload download status quickview link links get reset-password'
  local options='--user --password-stdin --code-stdin --proxy --ca --stall-timeout --json --quiet --verbose --help --version'
  local command place
  read -r command place <<<"$(_korvoweb_command)"
  COMPREPLY=()

  case "$previous" in
    --kind) mapfile -t COMPREPLY < <(compgen -W 'standard qz quickview' -- "$current"); return ;;
    --jobs) mapfile -t COMPREPLY < <(compgen -W '1 2 3 4 5 6' -- "$current"); return ;;
    --ca | --manhole-media) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
    --user | --proxy | --stall-timeout | --id | --name | --created) return ;;
  esac

  case "$command" in
    upload) options+=' --id --name --created --kind --jobs --manhole-media' ;;
    download) options+=' --jobs' ;;
  esac
  if [[ "$current" == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi

  case "$command:$place" in
    :) mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current") ;;
    quickview:1) mapfile -t COMPREPLY < <(compgen -W 'project survey manhole' -- "$current") ;;
    upload:1 | download:3) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    quickview:3 | get:2) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
  esac
}

complete -F _korvoweb korvoweb

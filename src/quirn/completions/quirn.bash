# Completion of quirn for bash.
_quirn() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    -l | --line) return ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--wait --line --recent --change-dir --new-window
      --diff --environment --help --version' -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
} && complete -o filenames -F _quirn quirn

# bash completion for kestra(1).
_kestra() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # "--format=json" is three words.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  case $previous in
    --format)
      mapfile -t COMPREPLY < <(compgen -W 'table vertical text csv json jsonl xml' -- "$current")
      return
      ;;
    --log | --image | --plugins | --cache)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    -f | --file)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --timeout | --limit | --sort | --image-user)
      return
      ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--file --format --active --timeout --check --explain --stats
      --wide --sort --limit --image --image-user --plugins --cache --log --version --help' -- "$current")
  fi
}
complete -F _kestra kestra

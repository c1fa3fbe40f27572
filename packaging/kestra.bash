# bash completion for kestra(1).
_kestra() {
  local current previous
  current=${COMP_WORDS[COMP_CWORD]}
  previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $previous in
    --format)
      COMPREPLY=($(compgen -W 'table vertical text csv json jsonl xml' -- "$current"))
      return
      ;;
    --log | --image | --plugins | --cache)
      compopt -o filenames
      COMPREPLY=($(compgen -d -- "$current"))
      return
      ;;
    -f | --file)
      compopt -o filenames
      COMPREPLY=($(compgen -f -- "$current"))
      return
      ;;
    --timeout | --limit | --sort | --image-user)
      return
      ;;
  esac
  if [[ $current == -* ]]; then
    COMPREPLY=($(compgen -W '--file --format --active --timeout --check --explain --stats --wide
      --sort --limit --image --image-user --plugins --cache --log --version --help' -- "$current"))
  fi
}
complete -F _kestra kestra

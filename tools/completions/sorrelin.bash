# Completion of sorrelin for bash.

_sorrelin_pages='--dpi --default-dpi --page --fit --border --rotate --compression --quality --deskew --clean --skip-blank --plain --keep-damaged --recursive --ocr --orientation --timeout --sort --jobs --json --verbose --quiet'

_sorrelin_options() {
  case $1 in
    make) echo "--help $_sorrelin_pages --title --author --subject --keywords --force" ;;
    append) echo "--help $_sorrelin_pages --in-place --no-rewrite" ;;
    batch) echo '--help --jobs --results --shard --force --quiet' ;;
    count) echo '--help --password-file' ;;
    scan)
      echo '--help --list --device --source --mode --resolution --option --prompt --separate --wait --title --author --subject --keywords --dpi --default-dpi --page --fit --border --rotate --compression --quality --deskew --clean --skip-blank --plain --keep-damaged --ocr --orientation --timeout --json --verbose --quiet'
      ;;
    info) echo '--help --json --password-file' ;;
    extract)
      echo '--help --pages --output --format --all --as-stored --password-file --jobs --force --json --quiet'
      ;;
    ocr) echo '--help --output --language --orientation --timeout --psm --redo --force --jobs --quiet' ;;
    words) echo '--help --format --text --language --orientation --timeout --psm --jobs' ;;
    *) echo '--help --version' ;;
  esac
}

# The values of an option of a verb; nothing for those that take any.
_sorrelin_values() {
  case $1 in
    --compression) echo 'auto g4 flate runlength jpeg none' ;;
    --rotate) echo 'auto 90 180 270' ;;
    --border) echo '10mm 0.5in' ;;
    --fit) echo 'within shrink fill stretch' ;;
    --page) echo 'a3 a4 a5 a6 b4 b5 letter legal executive tabloid' ;;
    --sort) echo 'natural name none' ;;
    --format) [ "$2" = words ] && echo 'json text hocr tsv alto' || echo 'keep png tiff bmp pnm jpeg' ;;
    --dpi | --default-dpi) echo '150 200 300 600' ;;
    --language | --ocr) echo 'auto eng' ;;
    --orientation) echo 'auto keep' ;;
    --source) echo 'flatbed adf duplex' ;;
    --mode) echo 'bilevel grey colour' ;;
    --separate) echo 'blank' ;;
  esac
}

_sorrelin() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} verb=
  COMPREPLY=()
  if [ "$COMP_CWORD" -gt 1 ]; then verb=${COMP_WORDS[1]}; fi
  case $before in
    --title | --author | --subject | --keywords | --quality | --jobs | --pages | --timeout | --psm | --shard | --device | --resolution | --option | --wait) return ;;
    --compression | --fit | --border | --rotate | --page | --sort | --format | --dpi | --default-dpi | --language | --ocr | --orientation | --source | --mode | --separate)
      COMPREPLY=($(compgen -W "$(_sorrelin_values "$before" "$verb")" -- "$word"))
      return
      ;;
  esac
  if [[ $word == -* ]]; then
    COMPREPLY=($(compgen -W "$(_sorrelin_options "$verb")" -- "$word"))
  elif [ -z "$verb" ]; then
    COMPREPLY=($(compgen -W 'make append batch count info extract ocr scan words' -- "$word"))
  else
    local IFS=$'\n'
    COMPREPLY=($(compgen -f -- "$word"))
    compopt -o filenames 2>/dev/null
  fi
}

complete -F _sorrelin sorrelin

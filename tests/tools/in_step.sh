#!/usr/bin/env bash
# The manual page and the completions know exactly the verbs and options that the program's help
# lists, and are sound in themselves. in_step.sh PROGRAM MANUAL COMPLETIONS
set -euo pipefail
program=$1
manual=$2
completions=$3
failed=0

fail() {
  echo "FAILED: $*"
  failed=1
}

# same WHAT EXPECTED FOUND: lists of words, in any order.
same() {
  local expected found
  expected=$(tr -s ' \n' '\n\n' <<<"$2" | sed '/^$/d' | sort -u)
  found=$(tr -s ' \n' '\n\n' <<<"$3" | sed '/^$/d' | sort -u)
  if [ "$expected" = "$found" ]; then return; fi
  fail "$1: the help has what is marked <, the other what is marked >"
  diff <(echo "$expected") <(echo "$found") | grep '^[<>]' || true
}

# What is at the start of an option's line in the help.
help_options() { "$program" "$@" --help | grep -oE '^  (-[a-zA-Z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'; }

verbs=$("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ "$(wc -w <<<"$verbs")" -ge 4 ] || fail "the help names too few verbs: $verbs"

# The options of a verb in the manual, those of the section for pages included where they are meant.
manual_options() {
  awk -v verb="$1" '
    /^\.SH/ { section = /PAGES FROM PICTURES/ ? "pages" : /GENERAL OPTIONS/ ? "general" : "" }
    /^\.SS sorrelin / { section = $3 }
    /^\.B[IR]? .*\\-\\-/ {
      line = $0
      gsub(/\\-/, "-", line)
      if (!match(line, /--[a-z-]+/)) next
      option = substr(line, RSTART, RLENGTH)
      if (section == verb) print option
      if (section == "pages" && (verb == "make" || verb == "append")) print option
      if (section == "pages" && verb == "scan" && option !~ /^--(recursive|sort|jobs)$/) print option
      if (section == "general" && (verb == "" || option == "--help")) print option
    }' "$manual"
}

# What each shell offers after the given words, of which the last is being typed.
bash_offers() {
  bash --norc -c '
    source "$1/sorrelin.bash"
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    _sorrelin
    printf "%s\n" "${COMPREPLY[@]}"' ask "$completions" "$@"
}
zsh_offers() {
  zsh -f -c '
    _arguments() { print -rl -- "$@" }
    _describe() { print -rl -- ${verbs%%:*} }
    source $1/_sorrelin
    shift
    words=("$@")
    CURRENT=$#
    _sorrelin' ask "$completions" "$@"
}
fish_offers() {
  fish --no-config -c 'source $argv[1]/sorrelin.fish; complete -C "$argv[2]"' "$completions" "$*" |
    cut -f1
}

echo "-- the manual page has no flaws"
out=$(mandoc -Tlint -W warning "$manual" 2>&1) || fail "mandoc: $out"
out=$(man --warnings -E UTF-8 -l -Tutf8 -Z "$manual" 2>&1 >/dev/null) || fail "man: $out"
[ -z "$out" ] || fail "man: $out"
same "verbs of the manual" "$verbs" "$(sed -n 's/^\.SS sorrelin //p' "$manual")"

echo "-- the completions are understood by their shells"
bash -n "$completions/sorrelin.bash" || fail "bash"
zsh -n "$completions/_sorrelin" || fail "zsh"
fish --no-execute "$completions/sorrelin.fish" || fail "fish"

echo "-- verbs"
same "verbs in bash" "$verbs" "$(bash_offers sorrelin '')"
same "verbs in zsh" "$verbs" "$(zsh_offers sorrelin '' | grep -v '^--')"
same "verbs in fish" "$verbs" "$(fish_offers 'sorrelin ')"

for verb in '' $verbs; do
  echo "-- options of sorrelin $verb"
  options=$(help_options $verb)
  same "manual: $verb" "$options" "$(manual_options "$verb")"
  same "bash: $verb" "$options" "$(bash_offers sorrelin $verb --)"
  same "zsh: $verb" "$options" "$(zsh_offers sorrelin $verb -- | grep -oE '^[*]?--[a-z-]+' | tr -d '*')"
  same "fish: $verb" "$options" "$(fish_offers sorrelin $verb --)"
done

# Each value that is offered is one that the program takes.
echo "-- values"
for option in --page --fit --border --rotate --compression --orientation --sort; do
  values=$(bash_offers sorrelin make "$option" '')
  same "zsh: $option" "$values" \
    "$(zsh_offers sorrelin make '' | sed -n "s/^$option\[.*:(\(.*\))\$/\1/p")"
  same "fish: $option" "$values" "$(fish_offers "sorrelin make $option ")"
  for value in $values; do
    page=()
    if [ "$option" = --fit ]; then page=(--page a4); fi
    message=$("$program" make /nowhere/out.pdf /nowhere/in.png "$option" "$value" "${page[@]}" 2>&1) &&
      code=0 || code=$?
    [ "$code" -eq 1 ] || fail "sorrelin make $option $value: $message"
  done
done

echo "-- files"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
touch "$folder/two words.png" "$folder/other.tif"
same "files in bash" "$folder/other.tif" "$(bash_offers sorrelin make "$folder/o")"
[ "$(bash_offers sorrelin make "$folder/t")" = "$folder/two words.png" ] || fail "a name with a blank"

[ "$failed" -eq 0 ] && echo "manual and completions are in step"

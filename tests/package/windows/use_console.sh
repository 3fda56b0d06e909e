#!/usr/bin/env bash
# Uses sorrelin.exe on a console, which Wine shows in a terminal: names in every script, the progress
# bar, the interrupt key.
# usage: use_console.sh PROGRAM FOLDER    (with WINEPREFIX set)
set -euo pipefail
program=$1
folder=$2/console
mkdir "$folder"
cd "$folder"

terminal() { tmux -S "$folder/socket" "$@"; }
trap 'terminal kill-server 2>/dev/null || true' EXIT

lines() { terminal capture-pane -p | sed 's/ *$//; /^$/d'; }
has() { lines | grep -q -e "$1"; }

# expect TEXT: the terminal shows a line with it within a minute.
expect() {
  local i
  for ((i = 0; i < 1200; ++i)); do
    if has "$1"; then return 0; fi
    sleep 0.05
  done
  echo "the console does not show: $1"
  lines | sed 's/^/  | /'
  return 1
}

# type_line TEXT: as if typed, and the enter key.
type_line() {
  terminal send-keys -l "$1"
  terminal send-keys Enter
}

# Coded one after another, they take longer than the second after which the bar is shown.
{ printf 'P6\n2500 2500\n255\n'; head -c 18750000 /dev/urandom; } >page.ppm
pages=$(printf 'page.ppm %.0s' {1..12})
bar='^\[#*\.*\] *[0-9]*%'

unset TMUX
export TERM=xterm-256color LANG=C.UTF-8
terminal -u -f /dev/null new-session -d -x 80 -y 24 "env PS1='ready ' ENV= sh"
expect ready

type_line "clear; wine '$program' count Größe漢字.pdf; echo code \$?"
expect '^code 1$'
expect 'sorrelin: Größe漢字.pdf: cannot be opened'

type_line "clear; wine '$program' make out.pdf $pages --jobs 1; echo code \$?"
expect "$bar"
expect '^code 0$'
if has "$bar"; then echo "the bar stays"; exit 1; fi
[ "$(wine "$program" count out.pdf | tr -d '\r')" = 12 ]
wine "$program" make out.pdf $pages --jobs 1 --force 2>messages
[ "$(cat messages)" = 'sorrelin: resolution assumed: pages 1-12' ]

cp out.pdf old.pdf
type_line "clear; wine '$program' append out.pdf $pages --jobs 1; echo code \$?"
expect "$bar"
terminal send-keys C-c
expect '^code 58$' # the low byte of 0xC000013A
if has "$bar"; then echo "the bar stays"; exit 1; fi
cmp old.pdf out.pdf
[ "$(ls -A | paste -sd' ')" = 'messages old.pdf out.pdf page.ppm socket' ]

#!/usr/bin/env bash
# The program as a user at a terminal meets it, in a terminal emulator: the progress bar, a terminal
# that changes its size, messages, and the interrupt key. terminal.sh PROGRAM
set -euo pipefail
program=$(realpath "$1")
folder=$(mktemp -d)
failed=0

terminal() { tmux -S "$folder/socket" "$@"; }

finish() {
  terminal kill-server 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT

# The lines that the terminal shows and that are not empty.
lines() { terminal capture-pane -p | sed '/^$/d'; }

fail() {
  echo "FAILED: $*"
  lines | sed 's/^/  | /'
  failed=1
}

# comes_true COMMAND...: tries for half a minute.
comes_true() {
  local i
  for ((i = 0; i < 600; ++i)); do
    if "$@"; then return 0; fi
    sleep 0.05
  done
  return 1
}

shows() { [ "$(lines)" = "$1" ]; }
expect() { comes_true shows "$1" || fail "the terminal should show: $1"; }

# type_line TEXT: as if typed, and the enter key.
type_line() {
  terminal send-keys -l "$1"
  terminal send-keys Enter
}

resize() {
  terminal resize-window -x "$1" -y 24
  comes_true has_columns "$1" || fail "the terminal has not taken $1 columns"
}
has_columns() { [ "$(terminal display-message -p '#{pane_width}')" = "$1" ]; }

# bar COLUMNS PERCENT: as wide as the terminal, whose last column stays free.
bar() {
  local cells=$(($1 - 1 - 7)) full
  full=$((cells * $2 / 100))
  printf '[%s%s] %3d%%' "$(printf '%*s' "$full" '' | tr ' ' '#')" \
    "$(printf '%*s' $((cells - full)) '' | tr ' ' '.')" "$2"
}

# start ARGUMENT...: runs `sorrelin make` in an empty terminal. Pipes among its pictures hold it up
# until they are fed.
start() {
  rm -rf "$folder/run"
  mkdir -p "$folder/run/to"
  cd "$folder/run"
  { printf 'P5\n64 64\n255\n'; head -c 4096 /dev/zero; } >a.pgm
  mkfifo pipe1 pipe2 pipe3 pipe4
  type_line "cd $folder/run; stty -g >before; clear"
  expect '$'
  type_line "clear; $program make $*"
}

# feed PIPE SECONDS: gives a picture to the program once it has waited that long at the pipe.
feed() {
  timeout 60 bash -c 'exec >"$1"; sleep "$2"; cat a.pgm' feed "$1" "$2" || fail "nobody reads $1"
}

# The bar comes after a second of work.
readonly quiet=1.2
readonly between=0.3

# ends CODE [LINE...]: the prompt is back after these lines, the program came to this code, and the
# terminal takes lines as it did before.
ends() {
  local code=$1
  shift
  expect "$(printf '%s\n' "$@" '$' | sed '/^$/d')"
  type_line 'code=$?; stty -g >after; clear; echo code $code'
  expect "$(printf 'code %d\n$' "$code")"
  cmp before after || fail "the terminal is not as it was"
}

under_way() { [ -n "$(ls -A to)" ]; }
nothing_left() { under_way && fail "left over: $(ls -A to)" || true; }

unset TMUX
export TERM=xterm-256color
terminal -f /dev/null new-session -d -x 80 -y 24 "env PS1='\$ ' ENV= sh"
expect '$'

echo "the bar fits the terminal as its size changes"
start to/out.pdf --jobs 1 a.pgm pipe1 pipe2 pipe3 pipe4
feed pipe1 $quiet
expect "$(bar 80 40)"
resize 30
feed pipe2 $between
expect "$(bar 30 60)"
resize 70
feed pipe3 $between
expect "$(bar 70 80)"
feed pipe4 $between
ends 0 'sorrelin: resolution assumed: pages 1-5'
[ -s to/out.pdf ] || fail "there is no document"
resize 80

echo "the interrupt key takes the bar away and leaves no file"
start to/out.pdf --jobs 1 a.pgm pipe1 pipe2 pipe3 pipe4
feed pipe1 $quiet
expect "$(bar 80 40)"
under_way || fail "no document is under way"
terminal send-keys C-c
ends 130
nothing_left

echo "the interrupt key ends the workers"
start to/out.pdf --jobs 3 '$(yes a.pgm | head -n 50)' pipe1
comes_true under_way || fail "no document is under way"
terminal send-keys C-c
ends 130 '^C'
nothing_left

echo "messages stand on lines of their own"
message='sorrelin: missing.png: No such file or directory (check the name)'
start to/out.pdf --jobs 1 a.pgm pipe1 missing.png pipe2 pipe3
feed pipe1 $quiet
expect "$message"
feed pipe2 $between
expect "$(printf '%s\n' "$message" "$(bar 80 80)")"
feed pipe3 $between
ends 1 "$message" 'sorrelin: resolution assumed: pages 1-4'

echo "a document is not sent to a terminal"
start - a.pgm
ends 2 'sorrelin: OUT: standard output is a terminal: name a file, or send the document' \
  'into a file or pipe (sorrelin help make says more)'

exit "$failed"

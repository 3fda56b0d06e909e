#!/usr/bin/env bash
# Prints on real queues: a scheduler of CUPS of its own on a loopback port, with nothing of the
# system's changed. Needs root, since a backend becomes its user; exits with 77 where parts are
# missing.
# usage: queue_trial.sh PROGRAM FILTER BACKEND DRIVER_FILE
set -euo pipefail
program=$1 filter=$2 backend=$3 driver=$4

cupsd=$(PATH=$PATH:/usr/sbin command -v cupsd) || { echo "no cupsd"; exit 77; }
[ -x /usr/lib/cups/filter/pdftopdf ] || { echo "no cups-filters"; exit 77; }
[ "$(id -u)" -eq 0 ] || { echo "not root"; exit 77; }
export PATH=$PATH:/usr/sbin

root=$(mktemp -d)
chmod 755 "$root"
scheduler=
finish() {
  local code=$?
  trap - EXIT
  if [ -n "$scheduler" ]; then kill "$scheduler" 2>/dev/null || true; wait "$scheduler" || true; fi
  if [ "$code" -ne 0 ] && [ -f "$root/error_log" ]; then grep -E "^[A-Z] \S+ \S+ \[Job" "$root/error_log" | grep -v "argv\|envp" | tail -n 40 | cut -c1-200; fi
  rm -rf "$root"
  exit "$code"
}
trap finish EXIT
fail() { echo "FAILED: $1"; exit 1; }

# The system's programs for CUPS, and ours beside them.
mkdir -p "$root"/{etc/ppd,bin/filter,bin/backend,spool,cache,state/certs,temp,folders,pictures}
for part in /usr/lib/cups/filter/*; do ln -s "$part" "$root/bin/filter/"; done
for part in cgi-bin daemon driver monitor notifier; do ln -s "/usr/lib/cups/$part" "$root/bin/$part"; done
install -m 755 "$filter" "$root/bin/filter/rastertosorrelin"
install -m 700 "$backend" "$root/bin/backend/sorrelin"
chown -R root:root "$root/bin"
chmod 1777 "$root/temp"

port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
cat >"$root/etc/cups-files.conf" <<END
ServerRoot $root/etc
ServerBin $root/bin
RequestRoot $root/spool
CacheDir $root/cache
StateDir $root/state
TempDir $root/temp
AccessLog $root/access_log
ErrorLog $root/error_log
PageLog $root/page_log
SystemGroup root
User lp
Group lp
PassEnv LSAN_OPTIONS
PassEnv ASAN_OPTIONS
END
cat >"$root/etc/cupsd.conf" <<END
Listen 127.0.0.1:$port
LogLevel debug
MaxLogSize 0
Browsing No
WebInterface No
DefaultAuthType None
JobRetryInterval 600
<Location />
  Order allow,deny
  Allow 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order allow,deny
    Allow 127.0.0.1
  </Limit>
</Policy>
END
export CUPS_SERVER=127.0.0.1:$port LC_ALL=C.UTF-8
"$cupsd" -f -c "$root/etc/cupsd.conf" -s "$root/etc/cups-files.conf" 2>"$root/scheduler_log" &
scheduler=$!
for _ in $(seq 100); do lpstat -r | grep -q 'is running' && break; sleep 0.1; done
lpstat -r | grep -q 'is running' || { cat "$root/scheduler_log"; fail "the scheduler does not start"; }

# queue NAME FOLDER: a queue that prints into a folder.
queue() { lpadmin -p "$1" -E -v "sorrelin:$2" -P "$driver" 2>/dev/null; }
# print QUEUE TITLE ARGUMENT...: the name of the job.
print() {
  local queue=$1 title=$2
  shift 2
  lp -U nobody -d "$queue" -t "$title" "$@" | sed -n 's/^request id is \([^ ]*\) .*/\1/p'
}
# ended JOB...: waits until jobs are neither waiting nor printing.
ended() {
  local job
  for job; do
    for _ in $(seq 300); do
      lpstat -W not-completed -o | grep -q "^$job " || continue 2
      sleep 0.1
    done
    fail "$job does not end"
  done
}
# said NAME OPTIONS TEXT: waits until lpstat says so of a queue or a job.
said() {
  for _ in $(seq 300); do
    # shellcheck disable=SC2086
    lpstat $2 "$1" 2>/dev/null | grep -q -- "$3" && return
    sleep 0.1
  done
  # shellcheck disable=SC2086
  lpstat $2 "$1" || true
  fail "lpstat does not say $3 of $1"
}
# delivered TITLE PAGES: what must be in the user's folder.
delivered() {
  local file="$root/folders/nobody/$1.pdf"
  [ -f "$file" ] || fail "no document $1"
  [ "$("$program" count "$file")" = "$2" ] || fail "$1 has not $2 pages"
  [ "$(stat -c '%U %a' "$file")" = "nobody 600" ] || fail "$1 is not its user's alone"
}

for shade in black white grey50; do gm convert -size 200x300 "xc:$shade" "$root/pictures/$shade.png"; done
"$program" make --quiet "$root/three.pdf" "$root"/pictures/*.png --page a4
printf 'A line of text\n%.0s' $(seq 5) >"$root/lines.txt"
queue pdf "$root/folders"

jobs=()
jobs+=("$(print pdf document "$root/three.pdf")")
jobs+=("$(print pdf picture "$root/pictures/grey50.png" -o ColorModel=Gray)")
jobs+=("$(print pdf text "$root/lines.txt" -o ColorModel=Black)")
jobs+=("$(print pdf copies -n 3 "$root/three.pdf" -o Resolution=100dpi)")
jobs+=("$(print pdf range -P 2-3 "$root/three.pdf" -o Resolution=100dpi)")
jobs+=("$(print pdf sides "$root/three.pdf" -o sides=two-sided-long-edge -o Resolution=100dpi)")
jobs+=("$(print pdf jpeg "$root/three.pdf" -o SorrelinCoding=JPEG -o Resolution=100dpi)")
jobs+=("$(print pdf ../x "$root/lines.txt" -o Resolution=100dpi)")
ended "${jobs[@]}"
delivered document 3
delivered picture 1
delivered text 1
delivered copies 9
delivered range 2
delivered sides 3
delivered jpeg 3
delivered _x 1
[ ! -e "$root/folders/x.pdf" ] || fail "a title left its folder"
grep -aq CCITTFaxDecode "$root/folders/nobody/text.pdf" || fail "black and white is not Group 4"
grep -aq DCTDecode "$root/folders/nobody/jpeg.pdf" || fail "the job's coding does not count"
pdfinfo "$root/folders/nobody/document.pdf" | grep -q '595 x 842 pts' || fail "the page is not A4"
pdfinfo "$root/folders/nobody/document.pdf" | grep -q '^Title: *document' || fail "no title"
echo "documents, pictures, text, copies, ranges, sides, codings and titles: as they should be"

# What the printing system itself makes of a document is read without a queue, too.
PPD=$driver /usr/lib/cups/filter/gstoraster 1 u t 1 "" "$root/three.pdf" >"$root/job.ras" 2>/dev/null
for type in pwg-raster urf; do
  PPD=$driver FINAL_CONTENT_TYPE=image/$type /usr/lib/cups/filter/rastertopwg 1 u t 1 "" \
    "$root/job.ras" >"$root/job.$type" 2>/dev/null
done
for job in ras pwg-raster urf; do
  "$program" make --quiet --force "$root/job.pdf" "$root/job.$job"
  [ "$("$program" count "$root/job.pdf")" = 3 ] || fail "job.$job has not 3 pages"
  pdfinfo "$root/job.pdf" | grep -q '595 x 842 pts' || fail "job.$job is not A4"
done
echo "rasters of three kinds: read by the program"

queue second "$root/folders"
ended "$(print pdf twice "$root/three.pdf" -o Resolution=100dpi)" \
  "$(print second twice "$root/three.pdf" -o Resolution=100dpi)"
delivered twice 3
delivered "twice (2)" 3
echo "two jobs at once: two documents"

printf 'RaS3%01796d' 0 >"$root/hostile.ras"
job=$(print pdf hostile "$root/hostile.ras")
said pdf '-l -o' 'Status: The job has a page of 808464432 by 808464432 pixels'
[ ! -e "$root/folders/nobody/hostile.pdf" ] || fail "a hostile raster became a document"
lpstat -p pdf | grep -q 'enabled' || fail "a hostile raster stops the queue"
cancel "$job"
echo "a hostile raster: the job fails, the queue goes on"

for page in $(seq 60); do cat "$root/pictures/grey50.png"; done | "$program" make --quiet "$root/long.pdf" - --page a4
job=$(print pdf cancelled "$root/long.pdf" -o Resolution=600dpi)
said pdf -p printing
sleep 1
cancel "$job"
ended "$job"
said pdf -p idle
if compgen -G "$root/folders/nobody/*cancelled*" || compgen -G "$root/folders/nobody/.sorrelin*"; then
  fail "a cancelled job leaves a file"
fi
echo "a cancelled job: nothing is left"

queue missing "$root/nowhere"
job=$(print missing lost "$root/lines.txt")
said missing -p disabled
said missing -p 'cannot be used: No such file'
lpstat -W not-completed -o | grep -q "^$job " || fail "the job is lost"
mkdir "$root/nowhere"
cupsenable missing
ended "$job"
[ -f "$root/nowhere/nobody/lost.pdf" ] || fail "the job does not go on"
echo "a missing folder: the queue stops, says why, and goes on when there is one"

# Whoever may not write there: the scheduler's user, which a backend runs as that others may run.
chmod 755 "$root/bin/backend/sorrelin"
mkdir -m 755 "$root/locked"
queue locked "$root/locked"
job=$(print locked denied "$root/lines.txt")
said locked -p disabled
said locked -p 'Permission denied'
chmod 700 "$root/bin/backend/sorrelin"
mkdir "$root/locked/nobody"
cupsenable locked
said locked '-l -o' 'hold'
lpstat -p locked | grep -q 'enabled' || fail "a folder of somebody else stops the queue"
[ -z "$(ls -A "$root/locked/nobody")" ] || fail "a document went into the folder of somebody else"
echo "a folder without the right to write: the queue stops, or the job is held"

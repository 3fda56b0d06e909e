#!/usr/bin/env bash
# Installs CUPS where it is missing and prints on real queues, by a scheduler of its own.
# usage: scripts/printer_trial.sh [BUILD]
#
# Needs root. Nothing of the system's printing is changed.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/release}")
scripts/packages.sh printer
for program in sorrelin rastertosorrelin sorrelin-backend; do
  if [ ! -x "$build/bin/$program" ]; then
    echo "there is no $build/bin/$program: build it first (cmake --preset release)" >&2
    exit 1
  fi
done
PATH=$PATH:/usr/sbin cupstestppd -q -I filters packaging/cups/sorrelin.ppd
export LSAN_OPTIONS=suppressions=$PWD/tests/leaks.supp:print_suppressions=0
exec tests/printer/queue_trial.sh "$build/bin/sorrelin" "$build/bin/rastertosorrelin" \
  "$build/bin/sorrelin-backend" packaging/cups/sorrelin.ppd

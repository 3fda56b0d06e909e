#!/usr/bin/env bash
# Makes a list of documents on one machine, then by a Slurm job array, by Dask and by GNU parallel over ssh,
# and compares the documents byte by byte. In each trial a worker is killed in the middle.
# usage: scripts/cluster_trial.sh [BUILD]
#
# Needs root. Every daemon is started here, on ports and with keys of its own, and ended in the end.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/release}")
examples=$PWD/examples/cluster
documents=200 shards=4
scripts/packages.sh cluster
if [ ! -x "$build/bin/sorrelin" ]; then
  echo "there is no $build/bin/sorrelin: build it first (cmake --preset release)" >&2
  exit 1
fi

folder=$(mktemp -d /tmp/sorrelin-cluster-XXXXXX)
chmod 755 "$folder"
started=()
finish() {
  for pid in "${started[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${started[@]}"; do
    for ((i = 0; i < 50; ++i)); do kill -0 "$pid" 2>/dev/null && sleep 0.1 || break; done
  done
  rm -rf "$folder"
}
trap finish EXIT
failed=0
fail() {
  echo "FAILED: $*" >&2
  failed=1
}

# What is installed by Debian's packages, and the program and the module that were built.
export PATH=$build/bin:/usr/bin:/usr/sbin:$PATH
export PYTHONPATH=$PWD/python SORRELIN_LIBRARY=$build/lib/libsorrelin.so PYTHONDONTWRITEBYTECODE=1
export SOURCE_DATE_EPOCH=86400
# The list has a name of its own, by which processes are found.
list=list-$$.jsonl

mkdir "$folder/pictures"
gm convert -size 2480x3508 xc:white -fill black -draw 'circle 800,900 1200,1300' -monochrome \
  -density 300x300 "$folder/pictures/0.png"
for ((n = 0; n < documents; ++n)); do
  [ "$n" -eq 0 ] || cp "$folder/pictures/0.png" "$folder/pictures/$n.png"
  printf '{"output": "%d.pdf", "pictures": ["pictures/%d.png"], "options": ["--title", "%d", "--compression", "g4"]}\n' \
    "$n" "$n" "$n"
done >"$folder/list"

# begin NAME: a folder for one trial, with the same names in it.
begin() {
  mkdir "$folder/$1"
  cd "$folder/$1"
  ln -s ../pictures .
  cp ../list "$list"
}

# compare NAME: the documents are those of one machine, nothing else is left, each is recorded once.
compare() {
  for ((n = 0; n < documents; ++n)); do
    cmp "$folder/one/$n.pdf" "$folder/$1/$n.pdf" || fail "$1: $n.pdf"
  done
  [ "$(find "$folder/$1" -name '.*' -type f | wc -l)" -eq 0 ] || fail "$1: files are left"
  local made
  made=$(cat "$folder/$1"/*.results | grep -c '"state": "made"')
  [ "$made" -eq "$documents" ] || fail "$1: $made documents are recorded"
}

# wait_for PART: until some documents of that shard are recorded.
wait_for() {
  local results=$list.$1-of-$shards.results
  for ((i = 0; i < 2000; ++i)); do
    if [ -s "$results" ] && [ "$(wc -l <"$results")" -ge 5 ]; then return; fi
    sleep 0.02
  done
}

# kill_shard PART: kills the program that makes that shard, in the middle.
kill_shard() {
  wait_for "$1"
  for pid in $(pgrep -f -- "^[^ ]*sorrelin batch $list --shard $1/$shards" || true); do
    kill -9 "$pid" && echo "killed $pid"
  done
}

echo "== one machine"
begin one
sorrelin batch "$list" --jobs 1

echo "== Slurm"
mkdir -m 755 "$folder/slurm-run" "$folder/slurm-run/munge"
cd "$folder/slurm-run"
head -c 128 /dev/urandom >munge/key
chmod 400 munge/key
munged --key-file="$PWD/munge/key" --socket="$PWD/munge/socket" --pid-file="$PWD/munge/pid" \
  --log-file="$PWD/munge/log" --seed-file="$PWD/munge/seed" --num-threads=10
started+=("$(cat munge/pid)")
host=$(hostname -s)
mkdir state spool
cat >slurm.conf <<CONF
ClusterName=trial
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
AuthType=auth/munge
AuthInfo=socket=$PWD/munge/socket
SlurmUser=root
StateSaveLocation=$PWD/state
SlurmdSpoolDir=$PWD/spool
SlurmctldPidFile=$PWD/slurmctld.pid
SlurmdPidFile=$PWD/slurmd.pid
SlurmctldLogFile=$PWD/slurmctld.log
SlurmdLogFile=$PWD/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
CONF
export SLURM_CONF=$PWD/slurm.conf
slurmctld
slurmd
for name in slurmctld slurmd; do
  for ((i = 0; i < 100; ++i)); do [ -s "$name.pid" ] && break || sleep 0.1; done
  started+=("$(cat "$name.pid")")
done
for ((i = 0; i < 300; ++i)); do sinfo -h -o %t 2>/dev/null | grep -q idle && break || sleep 0.1; done
begin slurm
"$examples/slurm.sh" "$list" "$shards" >"$folder/slurm.out" 2>&1 &
run=$!
kill_shard 2
wait "$run" || fail "Slurm: $(cat "$folder/slurm.out")"
cat "$folder/slurm.out"
grep -q 'try 1: shards 2 have failed' "$folder/slurm.out" || fail "Slurm: no task was killed"
compare slurm

echo "== Dask"
begin dask
dask-scheduler --host 127.0.0.1 --port 16820 --no-dashboard >"$folder/scheduler.log" 2>&1 &
started+=($!)
workers=()
for name in a b; do
  dask-worker tcp://127.0.0.1:16820 --name "$name" --nthreads 1 --no-dashboard --no-nanny \
    --local-directory "$folder/dask-$name" >"$folder/worker-$name.log" 2>&1 &
  started+=($!)
  workers+=($!)
done
"$examples/dask_batch.py" tcp://127.0.0.1:16820 "$list" "$shards" >"$folder/dask.out" 2>&1 &
run=$!
wait_for 1
kill -9 "${workers[0]}"
wait "$run" || fail "Dask: $(cat "$folder/dask.out")"
cat "$folder/dask.out"
compare dask

echo "== GNU parallel over ssh"
mkdir "$folder/ssh"
cd "$folder/ssh"
for name in host user; do ssh-keygen -q -t ed25519 -N '' -f "$name"; done
cat >sshd_config <<CONF
ListenAddress 127.0.0.1
Port 16821
HostKey $PWD/host
AuthorizedKeysFile $PWD/user.pub
PidFile $PWD/sshd.pid
PermitRootLogin prohibit-password
StrictModes no
UsePAM no
SetEnv PATH=$PATH
CONF
cat >config <<CONF
Host machine-*
  HostName 127.0.0.1
  HostKeyAlias machine
  Port 16821
  User root
  IdentityFile $PWD/user
  IdentitiesOnly yes
  UserKnownHostsFile $PWD/known
CONF
echo "machine $(cat host.pub)" >known
printf '1/machine-%s\n' a b >machines
mkdir -p /run/sshd
/usr/sbin/sshd -f sshd_config -E sshd.log
for ((i = 0; i < 100; ++i)); do [ -s sshd.pid ] && break || sleep 0.1; done
started+=("$(cat sshd.pid)")
begin parallel
parallel --will-cite --ssh "ssh -F $folder/ssh/config" --sshloginfile "$folder/ssh/machines" \
  --workdir . --env SOURCE_DATE_EPOCH --retries 3 --joblog "$folder/parallel.log" \
  sorrelin batch "$list" --shard "{}/$shards" --jobs 1 --quiet \
  ::: $(seq "$shards") >"$folder/parallel.out" 2>&1 &
run=$!
kill_shard 1
wait "$run" || fail "parallel: $(cat "$folder/parallel.out")"
"$examples/summary.py" "$list".*.results
for name in a b; do
  grep -q "machine-$name" "$folder/parallel.log" || fail "parallel: machine-$name had no shard"
done
compare parallel

cd /
[ "$failed" -eq 0 ] && echo "the documents are the same, byte for byte"

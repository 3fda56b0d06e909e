#!/usr/bin/env bash
# Makes the documents of a list as a Slurm job array, one task for each shard. Tries shards that have
# failed again, and sums up the results.
# usage: slurm.sh LIST SHARDS [TRIES]
#
# Run it where jobs are submitted, in a directory that all machines share: names in the list are seen
# from there. Options for sbatch, such as a partition, go into SBATCH_ variables:
#   SBATCH_PARTITION=batch SLURM_CPUS=4 slurm.sh list.jsonl 100
set -euo pipefail
list=$1 shards=$2 tries=${3:-3}

# As a task of the array: one shard. The last line is only reached when all its documents are there.
if [ -n "${SLURM_ARRAY_TASK_ID:-}" ]; then
  part=$SLURM_ARRAY_TASK_ID
  rm -f "$list.$part-of-$shards.done"
  sorrelin batch "$list" --shard "$part/$shards" --jobs "${SLURM_CPUS_PER_TASK:-1}" --quiet
  touch "$list.$part-of-$shards.done"
  exit
fi

# The shards that are not done, as Slurm takes them: 3,7,12.
left() {
  for ((part = 1; part <= shards; ++part)); do
    [ -e "$list.$part-of-$shards.done" ] || echo "$part"
  done | paste -sd,
}

rm -f "$list".*-of-"$shards".done
for ((try = 1; try <= tries; ++try)); do
  parts=$(left)
  [ -n "$parts" ] || break
  sbatch --wait --requeue --cpus-per-task="${SLURM_CPUS:-1}" --array="$parts" \
    --open-mode=append --output="$list.%a-of-$shards.log" "$0" "$list" "$shards" ||
    echo "try $try: shards $(left) have failed" >&2
done

"$(dirname "$0")/summary.py" "$list".*-of-"$shards".results
[ -z "$(left)" ]

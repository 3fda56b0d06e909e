#!/usr/bin/env python3
"""Makes the documents of a list on a Dask cluster, one task for each shard:
dask_batch.py SCHEDULER LIST SHARDS

SCHEDULER is the address of one that runs, such as tcp://10.0.0.1:8786. Its workers have Sorrelin and
its Python module, and start in a directory that all machines share: names in the list are seen from
there. A shard whose worker dies or that fails is tried again, and goes on where it was. Then each
document is opened by the Python module, and must have the pages that were recorded.
"""
import json
import subprocess
import sys

import distributed
import sorrelin

import summary

TRIES = 3


def make_shard(path, part, shards):
    """Makes the documents of a shard, on a worker, and returns the name of its results."""
    results = f"{path}.{part}-of-{shards}.results"
    # A worker that is killed takes its program with it.
    done = subprocess.run(["setpriv", "--pdeathsig", "TERM", "sorrelin", "batch", path, "--shard",
                           f"{part}/{shards}", "--jobs", "1", "--results", results, "--quiet"],
                          capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"shard {part}: {done.stderr}")
    return results


def check_shard(results):
    """Opens each document of a shard, on a worker, and returns those that are not as recorded."""
    with open(results, encoding="utf-8") as file:
        recorded = {line["output"]: line["pages"] for line in map(json.loads, file)}
    return [name for name, pages in recorded.items()
            if name is not None and sorrelin.page_count(name) != pages]


def main(scheduler, path, shards):
    names = [f"{path}.{part}-of-{shards}.results" for part in range(1, shards + 1)]
    with distributed.Client(scheduler) as client:
        made = client.map(make_shard, [path] * shards, range(1, shards + 1), [shards] * shards,
                          retries=TRIES, pure=False)
        checked = client.map(check_shard, made, pure=False)
        distributed.wait(checked)
        failed = [str(future.exception()) for future in checked if future.status == "error"]
        failed += [f"{name}: has other pages than recorded" for future in checked
                   if future.status == "finished" for name in future.result()]
    for problem in failed:
        print(problem, file=sys.stderr)
    return max(summary.main(names), 1 if failed else 0)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2], int(sys.argv[3])))

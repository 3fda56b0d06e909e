#!/usr/bin/env python3
"""Sums up the results of `sorrelin batch`: summary.py RESULTS...

The last line about a document counts. Prints what is wrong with documents that are not made, and the
totals, and fails if there are such documents.
"""
import collections
import json
import sys


def last_results(names):
    """The last result of each document, and of each line that is broken."""
    last = {}
    for name in names:
        with open(name, encoding="utf-8") as file:
            for line in file:
                if line.endswith("\n"):  # a run that was killed may have left half a line
                    result = json.loads(line)
                    last[result["output"] or (name, result["line"])] = result
    return last.values()


def main(names):
    states = collections.Counter()
    pages = size = 0
    for result in last_results(names):
        states[result["state"]] += 1
        pages += result["pages"]
        size += result["bytes"]
        if result["state"] != "made":
            print(*result["problems"], sep="\n", file=sys.stderr)
    counts = ", ".join(f"{count} {state}" for state, count in states.most_common())
    print(f"{counts or 'no documents'}: {pages} pages, {size / 1e6:.1f} MB")
    return 0 if set(states) == {"made"} else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

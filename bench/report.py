"""The page of what the benchmarks measured, and its plots.

usage: report.py LOG FOLDER [BENCHMARK.json]... <MACHINE

Reads the lines of bench/tool_bench.sh and bench/ocr_bench.sh in LOG that compare a job with another
program:

    JOB / PROGRAM    0.123 s    0.456 s   ratio 0.27 (limit 0.25)   bytes 1234 2345

and from each JSON file of a benchmark program those of its results that have a pair of times. It
writes performance.md and its plots into FOLDER. MACHINE, on standard input, is what the page says
of the run, in Markdown.
"""

import json
import pathlib
import re
import sys
from typing import NamedTuple, Optional
from xml.sax.saxutils import escape

LINE = re.compile(r"(.+) / (\S+)\s+([\d.]+) s\s+([\d.]+) s\s+ratio \S+ \(limit \S+\)"
                  r"(?:\s+bytes (\d+) (\d+))?")

# Counters of a benchmark in milliseconds: ours, the peer's, and what the peer is.
PAIRS = [("page_ms", "bare_ms", "codec alone"), ("page_ms", "encoder_ms", "coder alone"),
         ("ours_ms", "libtiff_ms", "libtiff")]
TITLES = {"page_bench": "write a page", "read_bench": "read a page", "group4_bench": "Group 4 data",
          "group4_page_bench": "write a Group 4 page"}

# Sizes in the plot, in its own units.
LABELS, BARS, NUMBERS, BAR, JOB = 330, 330, 140, 12, 44
OURS, THEIRS = "#2a6f97", "#b8b8b8"


class Job(NamedTuple):
    name: str
    peer: str
    seconds: tuple[float, float]  # ours, theirs
    bytes: Optional[tuple[int, int]]


def jobs_of(log: str) -> list[Job]:
    jobs = []
    for line in log.splitlines():
        found = LINE.fullmatch(line.strip())
        if found:
            name, peer, ours, theirs, our_bytes, their_bytes = found.groups()
            sizes = (int(our_bytes), int(their_bytes)) if our_bytes else None
            jobs.append(Job(name.strip(), peer, (float(ours), float(theirs)), sizes))
    return jobs


def job_name(program: str, benchmark: str) -> str:
    """Such as "read a page: Flate page, bits 8" for FlatePage/bits:8/iterations:30 of read_bench."""
    parts = [part for part in benchmark.split("/")
             if part != "manual_time" and not part.startswith(("iterations:", "min_time:"))]
    words = re.sub(r"(?<=[a-z0-9])(?=[A-Z])", " ", parts[0]).capitalize()
    rest = [re.sub("[_:]", " ", part) for part in parts[1:]]
    return f"{TITLES.get(program, program)}: {', '.join([words, *rest])}"


def benchmark_jobs(text: str) -> list[Job]:
    results = json.loads(text)
    program = pathlib.Path(results["context"]["executable"]).name
    jobs = []
    for result in results["benchmarks"]:
        for ours, theirs, peer in PAIRS:
            if ours in result and theirs in result:
                times = (result[ours] / 1e3, result[theirs] / 1e3)
                jobs.append(Job(job_name(program, result["name"]), peer, times, None))
    return jobs


def seconds(value: float) -> str:
    if value >= 1:
        return f"{value:.2f} s"
    return f"{value * 1000:.0f} ms" if value >= 0.01 else f"{value * 1000:.2f} ms"


def size(value: float) -> str:
    return f"{value / 1e6:.2f} MB" if value >= 1e5 else f"{value / 1e3:.1f} kB"


def table(jobs: list[Job]) -> str:
    rows = ["| job | beside | time | its time | ratio | size | its size |",
            "|---|---|---:|---:|---:|---:|---:|"]
    for job in jobs:
        sizes = [size(value) for value in job.bytes] if job.bytes else ["-", "-"]
        cells = [job.name, job.peer, *(seconds(value) for value in job.seconds),
                 f"{job.seconds[0] / job.seconds[1]:.2f}", *sizes]
        rows.append(f"| {' | '.join(cells)} |")
    return "\n".join(rows)


def bar(y: float, share: float, colour: str, text: str) -> str:
    width = share * BARS
    return (f'<rect x="{LABELS}" y="{y:g}" width="{width:.1f}" height="{BAR}" fill="{colour}"/>'
            f'<text x="{LABELS + width + 6:.1f}" y="{y + BAR - 2:g}">{escape(text)}</text>')


def plot(title: str, rows: list[tuple[str, str, tuple[float, float]]], unit) -> str:
    """Two bars for each row, ours and the peer's; the longer of the two is as long as there is room."""
    width, height = LABELS + BARS + NUMBERS, 40 + JOB * len(rows)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             f'font-family="sans-serif" font-size="12">',
             f'<title>{escape(title)}</title>',
             f'<rect width="{width}" height="{height}" fill="white"/>',
             f'<text x="10" y="22" font-size="15" font-weight="bold">{escape(title)}</text>']
    for number, (name, peer, values) in enumerate(rows):
        y = 40 + JOB * number
        longest = max(values)
        parts.append(f'<text x="{LABELS - 10}" y="{y + 18}" text-anchor="end">'
                     f'{escape(name)}</text>')
        parts.append(bar(y, values[0] / longest, OURS, f"sorrelin {unit(values[0])}"))
        parts.append(bar(y + BAR + 4, values[1] / longest, THEIRS, f"{peer} {unit(values[1])}"))
    return "\n".join([*parts, "</svg>", ""])


def page(jobs: list[Job], machine: str) -> str:
    return f"""# Performance

Jobs of the program beside other programs that do the same, and pages of the library beside the codec
that does their hardest part, from one run of `bench/report.sh`, which makes this page. Shorter bars
are better; each pair of bars has a scale of its own. The two of a pair took turns, and the shortest time
of each counts.

![Time of each job beside another program](performance-time.svg)

![Size of what each job writes beside another program](performance-size.svg)

{table(jobs)}

{machine.strip()}

`bench/tool_bench.sh` and `bench/ocr_bench.sh` make the inputs, run the jobs and fail where one takes
more of its peer's time than it should; `page_bench`, `read_bench`, `group4_bench` and
`group4_page_bench` measure the library.
"""


def main() -> int:
    log, folder = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), pathlib.Path(sys.argv[2])
    jobs = jobs_of(log)
    for name in sys.argv[3:]:
        jobs += benchmark_jobs(pathlib.Path(name).read_text(encoding="utf-8"))
    if not jobs:
        print("the log compares nothing", file=sys.stderr)
        return 1
    times = [(job.name, job.peer, job.seconds) for job in jobs]
    sizes = [(job.name, job.peer, job.bytes) for job in jobs if job.bytes]
    for name, text in (("performance.md", page(jobs, sys.stdin.read())),
                       ("performance-time.svg", plot("Time", times, seconds)),
                       ("performance-size.svg", plot("Size of the result", sizes, size))):
        (folder / name).write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())

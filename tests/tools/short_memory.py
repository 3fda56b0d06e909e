"""The program with too little memory: short_memory.py PROGRAM ALLOCATOR.

ALLOCATOR is preloaded and fails one allocation, or that one and all later ones. The program then
ends with 1 and what was there before is whole, or it does without the memory. Nothing else is left;
only a lasting shortage may leave the hidden folder of the output, whose removal needs memory too.
It says that memory was short, but where a library takes a single failure for damage.
"""
import os
import shutil
import subprocess
import sys
import tempfile

PROGRAM, ALLOCATOR = sys.argv[1:3]
MESSAGE = "memory"
PICTURE = b"P5 16 16 255\n" + bytes(range(256))


def run(arguments, wish=None):
    environment = dict(os.environ)
    if wish:
        environment |= {"LD_PRELOAD": ALLOCATOR, "FAIL_ALLOCATION": wish}
    return subprocess.run([PROGRAM, *arguments], env=environment, capture_output=True, text=True,
                          errors="replace", timeout=120)


def numbers():
    """1, 2, 3 ... and then with growing gaps, so that late allocations are met soon."""
    number = 1
    while True:
        yield number
        number += 1 + number // 12


class Scenario:
    """A command that changes, or reads, the file document.pdf."""

    def __init__(self, arguments):
        self.arguments = arguments
        self.faults = []
        self.runs = 0

    def prepare(self):
        with open("picture.pgm", "wb") as file:
            file.write(PICTURE)
        if os.path.exists("document.pdf"):
            os.remove("document.pdf")
        first = run(["make", "document.pdf", "picture.pgm"])
        assert first.returncode == 0, first.stderr
        with open("document.pdf", "rb") as file:
            self.before = file.read()
        self.files = set(os.listdir())
        complete = run(self.arguments)
        assert complete.returncode == 0, complete.stderr
        with open("document.pdf", "rb") as file:
            self.size_after = len(file.read())
        self.new_files = set(os.listdir()) - self.files

    def restore(self):
        for name in set(os.listdir()) - self.files:
            shutil.rmtree(name) if os.path.isdir(name) else os.remove(name)
        with open("document.pdf", "wb") as file:
            file.write(self.before)

    def check(self, wish):
        """Runs once; whether the program went on as if nothing had failed."""
        self.restore()
        self.runs += 1
        ended = run(self.arguments, wish)
        with open("document.pdf", "rb") as file:
            after = file.read()
        left = set(os.listdir()) - self.files
        hidden = {name for name in left if name.startswith(".sorrelin-")}

        def fault(what):
            self.faults.append(f"{' '.join(self.arguments)}, allocation {wish}: {what}: "
                               f"{ended.returncode} {ended.stderr.strip()[:200]!r}")

        if ended.returncode == 0:
            if len(after) != self.size_after or left != self.new_files:
                fault("success without its result")
        elif ended.returncode != 1 or ended.stderr.count("\n") == 0:
            fault("another end than a message")
        elif wish.endswith("+") and MESSAGE not in ended.stderr:
            fault("another message")
        elif after != self.before:
            fault("the old document is changed")
        elif not left <= self.new_files | (hidden if wish.endswith("+") else set()):
            fault(f"left behind: {left - self.new_files}")
        return ended.returncode == 0

    def test(self):
        self.prepare()
        tried = []
        for number in numbers():
            tried.append(number)
            if self.check(f"{number}+") or len(self.faults) > 20:
                break
        for number in tried:
            self.check(str(number))


def main():
    os.environ["SOURCE_DATE_EPOCH"] = "0"
    scenarios = [
        Scenario(["make", "--force", "document.pdf", "picture.pgm", "picture.pgm"]),
        Scenario(["append", "document.pdf", "picture.pgm"]),
        Scenario(["extract", "document.pdf"]),
        Scenario(["count", "document.pdf"]),
        Scenario(["info", "document.pdf"]),
    ]
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for scenario in scenarios:
            scenario.test()
            print(f"{scenario.arguments[0]}: {scenario.runs} runs, {len(scenario.faults)} broken",
                  flush=True)
            for fault in scenario.faults:
                print("  " + fault)
        os.chdir("/")
    sys.exit(any(scenario.faults for scenario in scenarios))


if __name__ == "__main__":
    main()

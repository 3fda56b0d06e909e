"""Counts the tests of a run of ctest, those within each test program one by one.

usage: count_tests.py JUNIT_FILE      prints how many passed and how many did not
"""

import re
import sys
import xml.etree.ElementTree


def cases(output, word):
    """How many tests the framework's summary names by a word such as PASSED."""
    found = re.findall(rf"\[ +{word} +\] (\d+) tests?\b", output)
    return int(found[-1]) if found else 0


def count(test):
    """Passed and failed tests of one test of ctest."""
    output = test.findtext("system-out") or ""
    passed = cases(output, "PASSED")
    failed = cases(output, "FAILED") + cases(output, "SKIPPED")
    if test.get("status") == "run":
        return (passed, failed) if passed + failed else (1, 0)
    return passed, max(failed, 1)


def main():
    tests = xml.etree.ElementTree.parse(sys.argv[1]).iter("testcase")
    counts = [count(test) for test in tests]
    print(sum(passed for passed, _ in counts), sum(failed for _, failed in counts))


if __name__ == "__main__":
    main()

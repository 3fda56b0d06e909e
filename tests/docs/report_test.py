"""The page that bench/report.py makes of a log."""

import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

REPORT = pathlib.Path(__file__).resolve().parents[2] / "bench/report.py"
LOG = """\
                                                         sorrelin       peer
8 files & more / img2pdf      0.250 s    1.000 s   ratio 0.25 (limit 0.35)   bytes 150000 300000
count pages / pdfinfo      3.000 s    1.500 s   ratio 2.00 (limit 2.00)
"""
SVG = "{http://www.w3.org/2000/svg}"


class Report(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_report(self, log):
        (self.folder / "log").write_text(log)
        return subprocess.run([sys.executable, REPORT, self.folder / "log", self.folder],
                              input="On one machine.", text=True, capture_output=True,
                              check=False).returncode

    def bars(self, name):
        root = ElementTree.parse(self.folder / name).getroot()
        return [float(bar.get("width")) for bar in root.iter(f"{SVG}rect")][1:]

    def test_each_job_is_a_row_with_its_ratio_and_sizes(self):
        self.assertEqual(self.run_report(LOG), 0)
        page = (self.folder / "performance.md").read_text()
        self.assertIn("| 8 files & more | img2pdf | 250 ms | 1.00 s | 0.25 | 0.15 MB | 0.30 MB |",
                      page)
        self.assertIn("| count pages | pdfinfo | 3.00 s | 1.50 s | 2.00 | - | - |", page)
        self.assertIn("On one machine.", page)

    def test_bars_are_as_long_as_the_measures(self):
        self.run_report(LOG)
        short, long, ours, theirs = self.bars("performance-time.svg")
        self.assertAlmostEqual(short, long / 4)
        self.assertAlmostEqual(theirs, ours / 2)
        ours, theirs = self.bars("performance-size.svg")
        self.assertAlmostEqual(ours, theirs / 2)

    def test_a_log_without_a_comparison_is_refused(self):
        self.assertEqual(self.run_report("nothing\n"), 1)
        self.assertFalse((self.folder / "performance.md").exists())


if __name__ == "__main__":
    unittest.main()

"""The page that bench/report.py makes of a log."""

import json
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

    def run_report(self, log, *results):
        (self.folder / "log").write_text(log)
        names = []
        for number, result in enumerate(results):
            names.append(self.folder / f"{number}.json")
            names[-1].write_text(json.dumps(result))
        return subprocess.run([sys.executable, REPORT, self.folder / "log", self.folder, *names],
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

    def test_results_of_a_benchmark_program_are_rows_where_they_compare(self):
        def result(name, **counters):
            return {"name": name, "real_time": 1.0, **counters}
        self.assertEqual(self.run_report("", {
            "context": {"executable": "build/bin/read_bench"},
            "benchmarks": [
                result("FlatePage/bits:8/iterations:30/manual_time", page_ms=12.0, bare_ms=10.0),
                result("OpenDocument/manual_time", ratio=15.0)]}, {
            "context": {"executable": "build/bin/group4_bench"},
            "benchmarks": [
                result("Encoding/text_300dpi/manual_time", ours_ms=1.0, libtiff_ms=4.0)]}), 0)
        page = (self.folder / "performance.md").read_text()
        self.assertIn("| read a page: Flate page, bits 8 | codec alone | 12 ms | 10 ms | 1.20 | - | - |",
                      page)
        self.assertIn("| Group 4 data: Encoding, text 300dpi | libtiff | 1.00 ms | 4.00 ms | 0.25 |",
                      page)
        self.assertNotIn("Open", page)

    def test_a_log_without_a_comparison_is_refused(self):
        self.assertEqual(self.run_report("nothing\n"), 1)
        self.assertFalse((self.folder / "performance.md").exists())


if __name__ == "__main__":
    unittest.main()

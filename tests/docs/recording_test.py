"""The picture that scripts/recording_svg.py makes of a terminal."""

import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts/recording_svg.py"


class Recording(unittest.TestCase):
    def lines(self, typescript):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "typescript").write_bytes(typescript)
            subprocess.run([sys.executable, SCRIPT, folder / "typescript", folder / "picture.svg"],
                           check=True)
            root = ElementTree.parse(folder / "picture.svg").getroot()
        return [("command" if text.get("fill") else "output", text.text)
                for text in root.iter("{http://www.w3.org/2000/svg}text")]

    def test_commands_and_what_they_print_are_lines(self):
        self.assertEqual(self.lines(b"$ make a & b\ndone <1>\r\n\r\n"),
                         [("command", "$ make a & b"), ("output", "done <1>")])

    def test_a_line_that_is_written_over_shows_its_last_state(self):
        self.assertEqual(self.lines(b"$ make\n[#   ] 1\r[####] 4\r\x1b[Kdone\r\n"),
                         [("command", "$ make"), ("output", "done")])


if __name__ == "__main__":
    unittest.main()

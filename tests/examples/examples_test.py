"""Runs the example programs and looks at their documents with poppler and qpdf.

usage: examples_test.py FOLDER [TESTCASE...], FOLDER being where the programs lie.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = pathlib.Path()


class ExampleTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="sorrelin-examples-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_example(self, name, *arguments, code=0, **options):
        """The finished process, after a check of its exit code."""
        done = subprocess.run([PROGRAMS / name, *map(str, arguments)], capture_output=True,
                              timeout=50, check=False, **options)
        self.assertEqual(done.returncode, code, done.stderr.decode(errors="replace"))
        return done

    def check_pages(self, document, pages):
        """qpdf finds no fault, and poppler counts this many pages."""
        self.assertEqual(faults_of(document), [])
        info = subprocess.run(["pdfinfo", document], check=True, capture_output=True, text=True)
        counts = [int(line.split()[1]) for line in info.stdout.splitlines() if "Pages:" in line]
        self.assertEqual(counts, [pages])

    def images(self, document):
        """One list of pdfimages' columns for each image of the document."""
        listing = subprocess.run(["pdfimages", "-list", document], check=True,
                                 capture_output=True, text=True)
        return [line.split() for line in listing.stdout.splitlines()[2:]]

    def pixels(self, document, page):
        """Width, height and bytes (red, green, blue) of the page's image, without a change."""
        prefix = self.folder / "image"
        subprocess.run(["pdfimages", "-f", str(page), "-l", str(page), document, prefix],
                       check=True, capture_output=True)
        (path,) = self.folder.glob("image-000.p?m")
        image = read_pnm(path.read_bytes())
        path.unlink()
        return image


def faults_of(document):
    """qpdf's warnings, but for /Columns standing twice in the parameters of Group 4."""
    check = subprocess.run(["qpdf", "--check", document], check=False, capture_output=True,
                           text=True)
    return [line for line in check.stderr.splitlines()
            if "has duplicated key /Columns" not in line
            and "operation succeeded with warnings" not in line]


def read_pnm(data):
    """Width, height and red, green, blue bytes of a P4, P5 or P6 file with one header line each."""
    kind, size, rest = data.split(b"\n", 2)
    width, height = map(int, size.split())
    if kind == b"P4":
        stride = (width + 7) // 8
        grey = bytes(0 if rest[y * stride + x // 8] >> (7 - x % 8) & 1 else 255
                     for y in range(height) for x in range(width))
    else:
        grey = rest.split(b"\n", 1)[1]
    return width, height, grey if kind == b"P6" else bytes(v for g in grey for v in (g, g, g))


def read_bmp(data):
    """Width, height, pixels a metre and the palette-free 24-bit rows from the top of a BMP file."""
    assert data[:2] == b"BM" and int.from_bytes(data[2:6], "little") == len(data)
    number = lambda at, size=4: int.from_bytes(data[at:at + size], "little")
    width, height, rows = number(18), number(22), number(10)
    assert number(28, 2) == 24
    stride = (width * 3 + 3) // 4 * 4
    lines = [data[rows + y * stride:rows + y * stride + width * 3] for y in range(height)]
    return width, height, number(38), lines[::-1]


class WriteDocument(ExampleTest):
    def test_the_page_is_a_ramp_of_256_greys(self):
        document = self.folder / "ramp.pdf"
        self.run_example("write_document", document)
        self.check_pages(document, 1)
        row = bytes(x for x in range(256) for _ in range(3))
        self.assertEqual(self.pixels(document, 1), (256, 256, row * 256))

    def test_a_missing_folder_is_told_with_the_name_and_the_cause(self):
        document = self.folder / "nowhere" / "ramp.pdf"
        done = self.run_example("write_document", document, code=1)
        self.assertEqual(done.stderr.decode(), f"{document}: No such file or directory\n")


class MemoryDocument(ExampleTest):
    def test_two_discs_are_coded_with_group_4(self):
        document = self.folder / "discs.pdf"
        self.run_example("memory_document", document)
        self.check_pages(document, 2)
        self.assertEqual([(image[3], image[4], image[8]) for image in self.images(document)],
                         [("800", "800", "ccitt")] * 2)
        for page, radius in ((1, 100), (2, 300)):
            _, _, pixels = self.pixels(document, page)
            # The disc is centred on row 400.
            middle = pixels[400 * 800 * 3:401 * 800 * 3:3]
            black = [x for x in range(800) if middle[x] == 0]
            self.assertEqual((black[0], black[-1]), (400 - radius, 400 + radius))


class AppendPages(ExampleTest):
    def test_a_second_run_adds_its_pages_behind_the_first(self):
        document = self.folder / "scan.pdf"
        self.run_example("append_pages", document, 3)
        self.check_pages(document, 3)
        self.run_example("append_pages", document, 2)
        self.check_pages(document, 5)
        self.assertEqual([self.bars(document, page) for page in range(1, 6)], [1, 2, 3, 1, 2])

    def bars(self, document, page):
        """Black bars on a sheet, counted down its first column."""
        width, height, pixels = self.pixels(document, page)
        column = pixels[::width * 3]
        self.assertEqual((width, height), (1000, 1400))
        return sum(1 for y in range(1, height) if column[y] == 0 != column[y - 1])

    def test_no_page_at_all_is_refused_and_the_document_stands(self):
        document = self.folder / "scan.pdf"
        self.run_example("append_pages", document, 1)
        before = document.read_bytes()
        self.run_example("append_pages", document, 0, code=2)
        self.assertEqual(document.read_bytes(), before)

    def test_a_file_that_is_no_document_is_left_alone(self):
        document = self.folder / "letter.txt"
        document.write_bytes(b"no document, but a text that is longer than fifty bytes by far\n")
        before = document.read_bytes()
        done = self.run_example("append_pages", document, 1, code=1)
        self.assertIn(b"File is not a PDF file (code 24)", done.stderr)
        self.assertEqual(document.read_bytes(), before)


class PipeDocument(ExampleTest):
    def test_standard_output_is_the_document_and_nothing_else(self):
        document = self.folder / "piped.pdf"
        document.write_bytes(self.run_example("pipe_document").stdout)
        self.check_pages(document, 2)
        self.assertTrue(document.read_bytes().startswith(b"%PDF-"))
        self.assertTrue(document.read_bytes().endswith(b"%%EOF\n"))

    def test_the_pages_come_out_of_the_pipe_as_they_went_in(self):
        piped = self.run_example("pipe_document").stdout
        self.run_example("read_pages", "-", self.folder / "page", input=piped)
        for page, blue in ((1, 40), (2, 240)):
            bmp = read_bmp((self.folder / f"page{page}.bmp").read_bytes())
            rows = [b"".join(bytes((blue, y, x // 2)) for x in range(300)) for y in range(200)]
            # 72 dpi comes back as 300 pixels on 300 points of 1/2834 m.
            self.assertEqual(bmp, (300, 200, 2834, rows))


class ReadPages(ExampleTest):
    def test_every_page_of_a_file_becomes_a_picture(self):
        self.run_example("memory_document", self.folder / "discs.pdf")
        self.run_example("read_pages", self.folder / "discs.pdf", self.folder / "disc")
        self.assertEqual(sorted(path.name for path in self.folder.glob("*.bmp")),
                         ["disc1.bmp", "disc2.bmp"])
        bmp = (self.folder / "disc1.bmp").read_bytes()
        # 14 bytes, the header, two colours, 800 rows of 100 bytes.
        self.assertEqual(len(bmp), 14 + 40 + 8 + 800 * 100)
        self.assertEqual(int.from_bytes(bmp[10:14], "little"), 14 + 40 + 8)

    def test_what_is_no_document_is_told_by_its_code(self):
        (self.folder / "none.pdf").write_bytes(b"nothing")
        done = self.run_example("read_pages", self.folder / "none.pdf", "page", code=1)
        self.assertIn(b"cannot be read (code 24)", done.stderr)
        done = self.run_example("read_pages", "-", "page", code=1, input=b"")
        self.assertIn(b"cannot be read (code 24)", done.stderr)


class JpegPages(ExampleTest):
    def picture(self, name, *arguments):
        path = self.folder / name
        subprocess.run(["cjpeg", *arguments, "-outfile", path], check=True,
                       input=b"P6 72 36 255\n" + bytes(range(72)) * (36 * 3))
        return path

    def test_each_file_is_the_image_of_a_page_byte_for_byte(self):
        document = self.folder / "photos.pdf"
        pictures = [self.picture("a.jpg"), self.picture("b.jpg", "-progressive", "-grayscale")]
        self.run_example("jpeg_pages", document, *pictures)
        self.check_pages(document, 2)
        for picture in pictures:
            self.assertIn(picture.read_bytes(), document.read_bytes())

    def test_what_is_no_jpeg_file_is_named(self):
        for name, data, cause in (("empty", b"", b"cannot be read"),
                                  ("text", b"nothing", b"Error during decompression")):
            path = self.folder / name
            path.write_bytes(data)
            done = self.run_example("jpeg_pages", self.folder / f"{name}.pdf", path, code=1)
            self.assertEqual(done.stderr, bytes(path) + b": " + cause + b"\n")


class TwoSessions(ExampleTest):
    def test_each_thread_has_written_its_own_document(self):
        documents = [self.folder / "a.pdf", self.folder / "b.pdf"]
        self.run_example("two_sessions", *documents)
        for document, first_grey in zip(documents, (20, 200)):
            self.check_pages(document, 20)
            for page in (1, 20):
                grey = first_grey + page - 1
                self.assertEqual(self.pixels(document, page),
                                 (400, 400, bytes([grey]) * (400 * 400 * 3)))

    def test_a_failure_of_one_session_leaves_the_other_alone(self):
        done = self.run_example("two_sessions", self.folder / "none" / "a.pdf",
                                self.folder / "b.pdf", code=1)
        self.assertIn(b"a.pdf: No such file or directory", done.stderr)
        self.check_pages(self.folder / "b.pdf", 20)


class OwnCodec(ExampleTest):
    def test_the_page_is_coded_by_the_library_that_the_caller_names(self):
        for name in ("PlainJpeg.dll", PROGRAMS / "libplainjpeg.so", PROGRAMS / "PlainJpeg.dll"):
            document = self.folder / "halves.pdf"
            self.run_example("use_codec", document, name)
            self.check_pages(document, 1)
            (image,) = self.images(document)
            self.assertEqual((image[3], image[4], image[8]), ("256", "256", "jpeg"))
            self.check_halves(document)
            document.unlink()

    def check_halves(self, document):
        """Red and blue to the last bit but a few, as RGB without chroma subsampling has them."""
        _, _, pixels = self.pixels(document, 1)
        for x, colour in ((0, (255, 0, 0)), (127, (255, 0, 0)), (128, (0, 0, 255)),
                          (255, (0, 0, 255))):
            found = pixels[3 * (100 * 256 + x):3 * (100 * 256 + x) + 3]
            self.assertLessEqual(max(abs(a - b) for a, b in zip(found, colour)), 3, (x, found))

    def test_a_name_without_a_library_is_told(self):
        done = self.run_example("use_codec", self.folder / "none.pdf", "NoSuch.dll", code=1)
        self.assertEqual(done.stderr, b"NoSuch.dll: no codec library of that name\n")


if __name__ == "__main__":
    PROGRAMS = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()

"""The Python module without NumPy: what it writes as poppler and qpdf see it, and back again."""

import array
import ctypes
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest
from unittest import mock

sys.modules["numpy"] = None  # an import of it fails from here on

import sorrelin
from sorrelin import Compression, PdfError, PdfReader, PdfWriter, _library

GREY = memoryview(bytes(x * 3 % 256 for x in range(60 * 40))).cast("B", (40, 60))
COLOUR = memoryview(bytes(x * 7 % 256 for x in range(31 * 20 * 3))).cast("B", (20, 31, 3))
# 37 pixels a row, so that rows end within a byte.
BILEVEL = memoryview(bytes((x * x + y) % 3 == 0 for y in range(25) for x in range(37))).cast(
    "?", (25, 37))


class ModuleTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="sorrelin-python-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.path = self.folder / "document.pdf"

    def write(self, *pages, mode="w", **options):
        with PdfWriter(self.path, mode, **options) as pdf:
            for page in pages:
                pdf.add_page(page)

    def columns(self):
        """pdfimages' columns of each image, after qpdf has found no fault in the document but
        for /Columns standing twice in the parameters of Group 4."""
        check = subprocess.run(["qpdf", "--check", self.path], check=False, capture_output=True,
                               text=True)
        self.assertEqual([line for line in check.stderr.splitlines()
                          if "has duplicated key /Columns" not in line
                          and "operation succeeded with warnings" not in line], [])
        listing = subprocess.run(["pdfimages", "-list", self.path], check=True,
                                 capture_output=True, text=True)
        return [line.split() for line in listing.stdout.splitlines()[2:]]

    def pdfinfo(self):
        lines = subprocess.run(["pdfinfo", self.path], check=True, capture_output=True,
                               text=True).stdout.splitlines()
        return {key: value.strip() for key, value in (line.split(":", 1) for line in lines)}


class Writing(ModuleTest):
    def test_each_kind_of_pixels_has_its_own_coding(self):
        self.write(BILEVEL, GREY, COLOUR)
        found = [(c[3], c[4], c[5], c[7], c[8]) for c in self.columns()]
        # Flate has no name of its own in pdfimages' list.
        self.assertEqual(found, [("37", "25", "gray", "1", "ccitt"),
                                 ("60", "40", "index", "8", "image"),
                                 ("31", "20", "rgb", "8", "image")])

    def test_every_lossless_coding_brings_the_pixels_back(self):
        for compression, pages in ((Compression.NONE, (BILEVEL, GREY, COLOUR)),
                                   (Compression.FLATE, (BILEVEL, GREY, COLOUR)),
                                   (Compression.RUN_LENGTH, (GREY,)),
                                   (Compression.CCITT, (BILEVEL,))):
            for page in pages:
                if compression == Compression.NONE and page is COLOUR:
                    page = memoryview(b"\xff" + bytes(COLOUR)[1:]).cast("B", COLOUR.shape)
                with self.subTest(compression=compression, format=page.format):
                    with PdfWriter(self.path) as pdf:
                        pdf.add_page(page, compression=compression)
                    with PdfReader(self.path) as pdf:
                        self.assertEqual(pdf[0].pixels.tolist(), page.tolist())

    def test_jpeg_keeps_a_smooth_picture_within_a_few_steps(self):
        smooth = memoryview(bytes(v for y in range(64) for x in range(64)
                                  for v in (x * 2, y * 2, 128))).cast("B", (64, 64, 3))
        with PdfWriter(self.path) as pdf:
            pdf.add_page(smooth, compression=Compression.JPEG, quality=95)
        self.assertEqual(self.columns()[0][8], "jpeg")
        with PdfReader(self.path) as pdf:
            difference = max(abs(a - b) for a, b in zip(bytes(pdf[0].pixels), bytes(smooth)))
        self.assertLessEqual(difference, 8)

    def test_resolution_gives_the_page_its_size(self):
        with PdfWriter(self.path) as pdf:
            pdf.add_page(bytes(1700 * 220), size=(1700, 220), bits=8, dpi=(200, 100))
        self.assertEqual(self.pdfinfo()["Page size"].split(" (")[0], "612 x 158 pts")
        with PdfReader(self.path) as pdf:
            x, y = pdf[0].dpi
        # 612 points for 1700 pixels are 200 dpi, 158 points for 220 are 100.25; a metre is taken
        # as 2834 points, 0.023 % too few.
        self.assertAlmostEqual(x, 200, delta=0.1)
        self.assertAlmostEqual(y, 100.25, delta=0.1)

    def test_without_a_resolution_a_page_has_96_dots_per_inch(self):
        self.write(memoryview(bytes(96 * 192)).cast("B", (192, 96)))
        self.assertEqual(self.pdfinfo()["Page size"], "72 x 144 pts")

    def test_a_palette_gives_the_colours_of_the_indices(self):
        palette = [(10, 20, 30), (200, 100, 0)]
        with PdfWriter(self.path) as pdf:
            pdf.add_page(memoryview(bytes((0, 1, 1, 0))).cast("B", (2, 2)), palette=palette)
        with PdfReader(self.path) as pdf:
            image = pdf[0]
        self.assertEqual(image.pixels.tolist(), [[list(palette[0]), list(palette[1])],
                                                 [list(palette[1]), list(palette[0])]])
        self.assertEqual(image.indices.tolist(), [[0, 1], [1, 0]])
        self.assertEqual(image.palette[:6], bytes((10, 20, 30, 200, 100, 0)))

    def test_flat_bytes_carry_packed_bits_with_1_as_white(self):
        with PdfWriter(self.path) as pdf:
            pdf.add_page(bytes((0b10110000, 0b01000000)), size=(4, 2), bits=1)
        with PdfReader(self.path) as pdf:
            self.assertEqual(pdf[0].pixels.tolist(), [[True, False, True, True],
                                                      [False, True, False, False]])

    def test_other_buffers_will_do(self):
        self.write(memoryview(array.array("B", range(12))).cast("B", (3, 4)),
                   memoryview(bytearray(range(12))).cast("B", (3, 4, 1)))
        with PdfReader(self.path) as pdf:
            self.assertEqual([bytes(image.pixels) for image in pdf], [bytes(range(12))] * 2)

    def test_strings_come_back_in_every_script(self):
        strings = {"title": "Gr\u00fc\u00dfe", "author": "\u4f5c\u8005", "subject": "\U0001f642",
                   "keywords": "a, b"}
        self.write(GREY, **strings)
        self.assertEqual(self.pdfinfo()["Title"], "Gr\u00fc\u00dfe")
        with PdfReader(self.path) as pdf:
            self.assertEqual({name: getattr(pdf, name) for name in strings}, strings)

    def test_the_longest_string_fits_and_one_more_is_refused(self):
        self.write(GREY, title="x" * 252, keywords="\U0001f642" * 125 + "x")
        with PdfReader(self.path) as pdf:
            self.assertEqual(pdf.title, "x" * 252)
        for name, text in (("title", "x" * 253), ("keywords", "\U0001f642" * 126),
                           ("author", "a\0b")):
            with self.assertRaises(ValueError):
                PdfWriter(self.path, **{name: text})

    def test_threads_write_side_by_side(self):
        def work(number):
            with PdfWriter(self.folder / f"{number}.pdf") as pdf:
                for _ in range(10):
                    pdf.add_page(GREY)
        threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([sorrelin.page_count(self.folder / f"{n}.pdf") for n in range(4)],
                         [10] * 4)


class Targets(ModuleTest):
    def test_a_new_document_replaces_the_file_when_it_is_finished(self):
        self.path.write_bytes(b"old")
        with PdfWriter(self.path) as pdf:
            pdf.add_page(GREY)
            self.assertEqual(self.path.read_bytes(), b"old")
        self.assertEqual(sorrelin.page_count(self.path), 1)
        self.assertEqual(os.listdir(self.folder), ["document.pdf"])

    def test_an_exception_leaves_no_half_file(self):
        for mode in "wxa":
            with self.assertRaises(ZeroDivisionError), PdfWriter(self.path, mode) as pdf:
                pdf.add_page(GREY)
                raise ZeroDivisionError
        self.assertEqual(os.listdir(self.folder), [])

    def test_a_target_that_cannot_be_replaced_leaves_no_half_file(self):
        self.path.mkdir()
        pdf = PdfWriter(self.path)
        pdf.add_page(GREY)
        with self.assertRaises(OSError):
            pdf.close()
        self.assertEqual(os.listdir(self.folder), ["document.pdf"])

    def test_an_exclusive_writer_refuses_a_file_that_exists(self):
        self.write(GREY, mode="x")
        before = self.path.read_bytes()
        with self.assertRaises(FileExistsError):
            PdfWriter(self.path, "x")
        self.assertEqual(self.path.read_bytes(), before)

    def test_an_exclusive_writer_does_not_replace_what_came_meanwhile(self):
        with self.assertRaises(FileExistsError), PdfWriter(self.path, "x") as pdf:
            pdf.add_page(GREY)
            self.path.write_bytes(b"other")
        self.assertEqual(self.path.read_bytes(), b"other")
        self.assertEqual(os.listdir(self.folder), ["document.pdf"])

    def test_an_update_adds_behind_the_pages_that_are_there(self):
        self.write(GREY, mode="a")
        self.write(COLOUR, BILEVEL, mode="a")
        self.assertEqual([c[3] for c in self.columns()], ["60", "31", "37"])

    def test_an_update_without_a_page_leaves_the_file_as_it_is(self):
        self.write(GREY)
        before = self.path.read_bytes()
        self.write(mode="a")
        self.assertEqual(self.path.read_bytes(), before)

    def test_an_update_that_is_broken_off_keeps_its_pages(self):
        self.write(GREY)
        with self.assertRaises(ZeroDivisionError), PdfWriter(self.path, "a") as pdf:
            pdf.add_page(COLOUR)
            raise ZeroDivisionError
        self.assertEqual([c[3] for c in self.columns()], ["60", "31"])

    def test_an_update_takes_no_strings(self):
        self.write(GREY)
        with self.assertRaises(ValueError):
            PdfWriter(self.path, "a", title="new")

    def test_a_failed_page_leaves_a_document_of_the_others(self):
        with PdfWriter(self.path) as pdf:
            pdf.add_page(GREY)
            with self.assertRaises(PdfError) as caught:
                pdf.add_page(GREY, compression=Compression.CCITT)
            pdf.add_page(COLOUR)
        self.assertEqual(caught.exception.code, 15)
        self.assertEqual(caught.exception.text,
                         "The filter (compression) type currently is not supported")
        self.assertEqual([c[3] for c in self.columns()], ["60", "31"])

    def test_a_document_in_memory_is_read_from_memory(self):
        pdf = PdfWriter(None)
        pdf.add_page(COLOUR)
        with self.assertRaises(ValueError):
            pdf.getvalue()
        pdf.close()
        document = pdf.getvalue()
        self.assertTrue(document.startswith(b"%PDF-") and document.endswith(b"%%EOF\n"))
        for source in (document, bytearray(document), memoryview(document)):
            with PdfReader(source) as read:
                self.assertEqual(read[0].pixels.tolist(), COLOUR.tolist())

    def test_a_document_in_memory_cannot_be_updated(self):
        with self.assertRaises(ValueError):
            PdfWriter(None, "a")

    def test_a_closed_writer_takes_nothing(self):
        pdf = PdfWriter(self.path)
        pdf.close()
        pdf.close()
        with self.assertRaises(ValueError):
            pdf.add_page(GREY)

    def test_a_missing_folder_has_the_system_s_text(self):
        with self.assertRaises(PdfError) as caught:
            PdfWriter(self.folder / "none" / "a.pdf")
        self.assertEqual((caught.exception.code, caught.exception.text),
                         (1, "No such file or directory"))

    def test_a_codec_that_is_not_there_is_code_19_or_21(self):
        with PdfWriter(None) as pdf:
            for page, compression, code in ((BILEVEL, Compression.CCITT, 19),
                                            (COLOUR, Compression.JPEG, 21)):
                with self.assertRaises(PdfError) as caught:
                    pdf.add_page(page, compression=compression, codec="NoSuch.dll")
                self.assertEqual(caught.exception.code, code)


class Arguments(ModuleTest):
    def refuse(self, kind, *arguments, **options):
        with PdfWriter(None) as pdf, self.assertRaises(kind):
            pdf.add_page(*arguments, **options)

    def test_shapes_and_formats_that_are_no_picture(self):
        self.refuse(TypeError, memoryview(bytes(16)).cast("B", (2, 2, 4)))
        self.refuse(TypeError, memoryview(bytes(16)).cast("H", (2, 4)))
        self.refuse(TypeError, 5)
        self.refuse(ValueError, b"123", size=(2, 2), bits=8)
        self.refuse(ValueError, b"1234")
        self.refuse(ValueError, b"1234", size=(2, 2), bits=4)
        self.refuse(ValueError, GREY, size=(60, 40))
        self.refuse(ValueError, b"", size=(0, 4), bits=8)

    def test_palettes_that_do_not_fit(self):
        self.refuse(ValueError, COLOUR, palette=[(0, 0, 0)])
        self.refuse(ValueError, GREY, palette=[(0, 0, 0)] * 257)
        self.refuse(ValueError, GREY, palette=b"1234")
        self.refuse(ValueError, GREY, palette=[])
        self.refuse(ValueError, GREY, palette=[(0, 0, 0, 0)] * 3)
        self.refuse(TypeError, GREY, palette=[0, 0, 0])

    def test_resolutions_that_leave_no_page(self):
        self.refuse(ValueError, GREY, dpi=0)
        self.refuse(ValueError, GREY, dpi=-300)
        self.refuse(ValueError, GREY, dpi=(300, 1e12))
        # 0.36 points come to none, 0.5 to one.
        self.refuse(ValueError, b"1", size=(1, 1), bits=8, dpi=200)
        with PdfWriter(self.path) as pdf:
            pdf.add_page(b"1", size=(1, 1), bits=8, dpi=144)
        self.assertEqual(sorrelin.page_count(self.path), 1)

    def test_paths_with_a_nul_are_refused(self):
        with self.assertRaises(ValueError):
            PdfWriter("a\0b")


class Reading(ModuleTest):
    def test_pages_are_a_sequence(self):
        self.write(GREY, COLOUR, BILEVEL)
        with PdfReader(self.path) as pdf:
            self.assertEqual((len(pdf), pdf[-1].bits, [image.bits for image in pdf]),
                             (3, 1, [8, 24, 1]))
            for page in (3, -4):
                with self.assertRaises(IndexError):
                    pdf[page]

    def test_bilevel_is_white_where_true_whatever_the_order_of_the_colours(self):
        self.write(BILEVEL)
        data = self.path.read_bytes()
        self.assertEqual(data.count(b"/Decode [0 1]"), 1)
        self.path.write_bytes(data.replace(b"/Decode [0 1]", b"/Decode [1 0]"))
        with PdfReader(self.path) as pdf:
            self.assertEqual(pdf[0].pixels.tolist(),
                             [[not value for value in row] for row in BILEVEL.tolist()])

    def test_what_is_no_document_has_the_library_s_code(self):
        for data, code in ((b"", 24), (b"nothing", 24), (b"%PDF-2.0" + bytes(60), 25)):
            with self.assertRaises(PdfError) as caught:
                PdfReader(data)
            self.assertEqual(caught.exception.code, code)
        with self.assertRaises(PdfError) as caught:
            PdfReader(self.folder / "none.pdf")
        self.assertEqual(caught.exception.code, 23)
        self.assertIn("none.pdf", str(caught.exception))

    def test_a_page_without_an_image_is_an_error_of_its_own(self):
        self.write(GREY)
        data = self.path.read_bytes().replace(b"/XObject <<", b"/YObject <<")
        with PdfReader(data) as pdf, self.assertRaises(PdfError) as caught:
            pdf[0]
        self.assertEqual((caught.exception.code, caught.exception.text),
                         (0, "the page has no image that can be read"))

    def test_a_closed_reader_gives_nothing(self):
        self.write(GREY)
        pdf = PdfReader(self.path)
        pdf.close()
        with self.assertRaises(ValueError):
            pdf[0]
        with self.assertRaises(ValueError):
            pdf.title

    def test_images_outlive_their_reader(self):
        self.write(GREY)
        with PdfReader(self.path) as pdf:
            image = pdf[0]
        self.assertEqual(image.pixels.tolist(), GREY.tolist())


class Version(unittest.TestCase):
    def test_the_module_the_packages_and_the_library_have_one_version(self):
        root = pathlib.Path(__file__).resolve().parents[2]
        library = re.search(r"VERSION ([\d.]+)", (root / "CMakeLists.txt").read_text()
                            .partition("project(sorrelin")[2])[1]
        packages = re.match(r"sorrelin \(([\d.]+)-",
                            (root / "packaging/debian/changelog").read_text())[1]
        self.assertEqual((sorrelin.__version__, packages), (library, library))


class Finding(ModuleTest):
    """Where the library is looked for, each in a fresh interpreter."""

    def run_with(self, library, module_folder, **environment):
        environment = {"PATH": os.environ["PATH"], "PYTHONPATH": str(module_folder), **environment}
        if library is not None:
            environment["SORRELIN_LIBRARY"] = str(library)
        program = "import sorrelin; sorrelin.PdfWriter(None).close()"
        return subprocess.run([sys.executable, "-c", program], capture_output=True, text=True,
                              env=environment, check=False)

    def setUp(self):
        super().setUp()
        self.built = pathlib.Path(os.environ["SORRELIN_LIBRARY"])
        self.package = self.folder / "sorrelin"
        shutil.copytree(pathlib.Path(sorrelin.__file__).parent, self.package)

    def test_beside_the_module(self):
        for library in self.built.parent.glob("libsorrelin*.so.13"):
            shutil.copy(library, self.package)
        self.assertEqual(self.run_with(None, self.folder).returncode, 0)

    def test_by_the_loader_s_search(self):
        done = self.run_with(None, self.folder, LD_LIBRARY_PATH=str(self.built.parent))
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_nowhere_is_told_with_what_to_do(self):
        done = self.run_with(self.folder / "none.so", self.folder)
        self.assertIn("SORRELIN_LIBRARY may name its file", done.stderr)
        self.assertIn("none.so", done.stderr)


class OnWindows(ModuleTest):
    """What is loaded where the system is Windows, by an interpreter that is told so."""

    def setUp(self):
        super().setUp()
        self.module, self.programs = self.folder / "module", self.folder / "programs"
        self.windows = mock.Mock()
        self.loaded = mock.Mock()
        for folder in (self.module, self.programs):
            folder.mkdir()
        for patch in (
                mock.patch.object(sys, "platform", "win32"),
                mock.patch.object(_library, "__file__", str(self.module / "_library.py")),
                mock.patch.object(ctypes, "windll", self.windows, create=True),
                mock.patch.object(ctypes, "CDLL", self.loaded),
                mock.patch.dict(os.environ, {"PATH": str(self.programs)})):
            patch.start()
            self.addCleanup(patch.stop)
        os.environ.pop("SORRELIN_LIBRARY", None)

    def test_the_library_beside_the_module_comes_first(self):
        for folder in (self.module, self.programs):
            (folder / "Sorrelin.dll").touch()
        _library.load_library()
        self.loaded.assert_called_once_with(str(self.module / "Sorrelin.dll"))

    def test_the_library_is_found_where_programs_are(self):
        (self.programs / "Sorrelin.dll").touch()
        _library.load_library()
        self.loaded.assert_called_once_with(str(self.programs / "Sorrelin.dll"))

    def test_the_loader_is_asked_by_the_plain_name(self):
        _library.load_library()
        self.loaded.assert_called_once_with("Sorrelin.dll")

    def test_blocks_are_the_system_s(self):
        library = _library.core_library.__wrapped__()
        self.assertIs(library.GlobalAlloc, self.windows.kernel32.GlobalAlloc)
        self.assertIsNot(library.pdf_Init_PDF, self.windows.kernel32.pdf_Init_PDF)


if __name__ == "__main__":
    unittest.main()

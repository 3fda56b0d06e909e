"""Shows that what docs/sharp-edges.md claims is so, through the flat interface.

What ends the process or writes to standard output is done in an interpreter of its own.
"""

import ctypes
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

import sorrelin
from sorrelin import Compression, PdfReader

LIBRARY = sorrelin._library.core_library()
LIBRARY.pdf_ClosePDFFile.argtypes = [ctypes.c_int64]
LIBRARY.pdf_ClosePDFFile.restype = None
LIBRARY.pdf_ClosePDFInMemory.argtypes = [ctypes.c_int64]
GREYS = b"".join(bytes((grey, grey, grey, 0)) for grey in range(256))
NO_LIBRARY = b"\0\0"
CADWICK, RENNICK = sorrelin._library.wide("Cadwick.dll"), sorrelin._library.wide("Rennick.dll")


def bitmap(width, height, bits, behind_header, compression=0, colours=0, per_metre=2835):
    """A block with a packed bitmap at 72 dpi."""
    data = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, 0, per_metre,
                       per_metre, colours, 0) + behind_header
    block = LIBRARY.GlobalAlloc(0x42, len(data))
    ctypes.memmove(LIBRARY.GlobalLock(block), data, len(data))
    LIBRARY.GlobalUnlock(block)
    return block


def grey(pixel=0, size=8):
    return bitmap(size, size, 8, GREYS + bytes([pixel]) * (size * size))


class Session:
    """A session by its handle; each call gives its result."""

    def __init__(self):
        handle = ctypes.c_int64()
        LIBRARY.pdf_Init_PDF(ctypes.byref(handle))
        self.handle = handle.value

    def create(self, path):
        return LIBRARY.pdf_CreatePDFW(self.handle, sorrelin._library.wide(str(path)))

    def create_in_memory(self, document=None):
        return LIBRARY.pdf_CreatePDFInMemory(self.handle, document, len(document or b""))

    def page(self, block, compression=Compression.FLATE, codec=NO_LIBRARY, quality=6):
        return LIBRARY.pdf_SaveDIBAsColorPDFPageW(self.handle, block, codec, compression, quality)

    def finish(self):
        return LIBRARY.pdf_FinishPDF(self.handle)

    def finish_in_memory(self):
        data, size = ctypes.c_void_p(), ctypes.c_uint32()
        code = LIBRARY.pdf_FinishPDFInMemory(self.handle, ctypes.byref(data), ctypes.byref(size))
        return code, ctypes.string_at(data.value, size.value) if code == 0 else None

    def code(self):
        return LIBRARY.pdf_PDF_GetLastError(self.handle)

    def text(self):
        buffer = ctypes.create_string_buffer(4096)
        LIBRARY.pdf_GetLastPDFErrorText(self.handle, buffer)
        return buffer.value.decode()

    def close(self):
        LIBRARY.pdf_ClosePDFFile(self.handle)


def document(*pages):
    """A document in memory; each page is the arguments of Session.page."""
    session = Session()
    session.create_in_memory()
    for page in pages:
        assert session.page(*page) == 0, session.text()
    return session.finish_in_memory()[1]


def image(data, page=0):
    with PdfReader(data) as pdf:
        return pdf[page]


def refusal(block, *arguments):
    session = Session()
    session.create_in_memory()
    code = session.page(block, *arguments)
    session.close()
    return code


def in_own_process(program):
    """A program that may use all of this file."""
    start = "import sys, unittest; sys.path.insert(0, %r); from sharp_edges_test import *\n" % str(
        pathlib.Path(__file__).parent)
    return subprocess.run([sys.executable, "-c", start + program], capture_output=True, text=True,
                          timeout=60, check=False)


def replaced(data, old, new):
    """The document with other bytes of the same number."""
    assert data.count(old) == 1 and len(new) <= len(old)
    return data.replace(old, new.ljust(len(old)))


class EdgeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="sorrelin-edges-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.path = self.folder / "document.pdf"

    def store(self, data):
        self.path.write_bytes(data)
        return data

    def tool(self, *arguments):
        return subprocess.run([*map(str, arguments)], cwd=self.folder, capture_output=True,
                              text=True, check=False)


class Loading(EdgeTest):
    def test_loading_and_unloading_print(self):
        self.assertEqual(in_own_process("").stdout, "Sorrelin DLLMain end" * 2)


class Bitmaps(EdgeTest):
    def test_from_the_top_down_are_refused(self):
        self.assertEqual(refusal(bitmap(8, -8, 24, bytes(192))), 10)
        self.assertEqual(refusal(bitmap(8, -8, 24, bytes(192)), Compression.JPEG, RENNICK), 20)
        self.assertEqual(refusal(bitmap(8, -8, 1, bytes(40)), Compression.CCITT, CADWICK), 20)

    def test_compressed_ones_are_taken_for_pixels(self):
        coded = bytes((8, 5)) * 8 + bytes(48)  # eight runs of eight fives
        self.assertEqual(bytes(image(document((bitmap(8, 8, 8, GREYS + coded, 1),))).pixels)[-16:],
                         coded[8:16] + coded[:8])

    def test_16_colours_suit_flate_and_not_run_length(self):
        block = bitmap(8, 8, 8, GREYS[:64] + bytes([3]) * 64, colours=16)
        flate, runs = (document((block, coding)) for coding in (4, 5))
        self.assertEqual(set(bytes(image(flate).indices)), {3})
        self.assertEqual(set(bytes(image(runs).indices)), {0})
        self.store(flate)
        self.assertIn("lookup table stream too short",
                      self.tool("pdftoppm", "-r", "72", self.path, "page").stderr)

    def test_a_first_colour_that_is_not_black_is_white(self):
        blue_on_white = bytes((80, 0, 0, 0, 255, 255, 255, 0))
        block = bitmap(32, 1, 1, blue_on_white + b"\xf0\0\0\0")  # four white pixels, then blue
        data = document((block, Compression.CCITT, CADWICK))
        self.assertEqual(image(data).pixels.tolist()[0][:6], [False] * 4 + [True] * 2)

    def test_other_depths_are_refused(self):
        for bits in (4, 16, 32):
            self.assertEqual(refusal(bitmap(8, 8, bits, bytes(1024))), 5)


class Pages(EdgeTest):
    def test_less_than_half_a_point_is_a_success_without_a_page(self):
        data = document((bitmap(1, 1, 8, GREYS + bytes(4), per_metre=7874),))
        self.assertEqual((sorrelin.page_count(data), data.count(b"/Subtype /Image")), (0, 1))

    def test_an_8_bit_jpeg_comes_back_as_its_indices(self):
        red_and_blue = bytes((0, 0, 255, 0, 255, 0, 0, 0)) + bytes(1016)
        block = bitmap(8, 8, 8, red_and_blue + bytes([1]) * 64)
        back = image(document((block, Compression.JPEG, RENNICK, 90)))
        self.assertEqual((back.palette, set(bytes(back.pixels))), (None, {1}))

    def test_the_bilevel_call_refuses_other_depths(self):
        LIBRARY.pdf_SaveDIBAsPDFPageW.argtypes = [ctypes.c_int64, ctypes.c_void_p, ctypes.c_char_p]
        session = Session()
        session.create_in_memory()
        self.assertEqual(LIBRARY.pdf_SaveDIBAsPDFPageW(session.handle, grey(), CADWICK), 15)

    def test_qpdf_remarks_on_columns_and_nothing_else(self):
        self.store(document((bitmap(32, 1, 1, bytes(12)), Compression.CCITT, CADWICK)))
        check = self.tool("qpdf", "--check", self.path)
        warnings = [line for line in check.stderr.splitlines() if "WARNING" in line]
        self.assertEqual((check.returncode, len(warnings)), (3, 1))
        self.assertIn("duplicated key /Columns", warnings[0])


class Documents(EdgeTest):
    def test_a_string_of_253_units_ends_the_process_at_the_create_call(self):
        done = in_own_process("""
s = Session()
print(LIBRARY.pdf_SetTitleW(s.handle, sorrelin._library.wide("x" * 253)), file=sys.stderr, flush=True)
s.create_in_memory()
""")
        self.assertEqual(done.returncode, -6)
        self.assertEqual(done.stderr.splitlines(),
                         ["0", "sorrelin: a line of the document does not fit in 1024 bytes"])

    def test_the_object_table_is_full_after_the_pages_that_are_told(self):
        for bits, colours, pages in ((24, b"", 15007), (8, GREYS, 11255)):
            session, added = Session(), 0
            block = bitmap(8, 8, bits, colours + bytes(192))
            self.path.unlink(missing_ok=True)
            self.assertEqual(session.create(self.path), 0)
            while session.page(block, Compression.NONE) == 0:
                added += 1
            self.assertEqual((added, session.code(), session.finish()), (pages, 40, 0))
            self.assertEqual(sorrelin.page_count(self.path), pages)

    def test_a_second_document_on_one_session_is_damaged(self):
        session = Session()
        for name in ("first.pdf", "second.pdf"):
            path = self.folder / name
            self.assertEqual((session.create(path), session.page(grey()), session.finish()),
                             (0, 0, 0))
        self.assertEqual(self.tool("qpdf", "--check", "first.pdf").returncode, 0)
        self.assertIn("damaged", self.tool("qpdf", "--check", "second.pdf").stderr)

    def test_the_fixed_strings(self):
        data = document()
        self.assertIn(b"/Title (Converted Document)\n", data)
        self.assertRegex(data, rb"/CreationDate \(D:\d{14}\)\n")


class Updates(EdgeTest):
    def update(self, *pages):
        session = Session()
        self.assertEqual(session.create(self.path), 0)
        for page in pages:
            self.assertEqual(session.page(*page), 0)
        return session

    def test_an_update_finished_without_a_page_writes_over_the_start(self):
        self.store(document((grey(),)))
        self.assertEqual(self.update().finish(), 0)
        self.assertNotEqual(self.path.read_bytes()[:5], b"%PDF-")

    def test_an_update_closed_without_a_page_changes_nothing(self):
        before = self.store(document((grey(),)))
        self.update().close()
        self.assertEqual(self.path.read_bytes(), before)

    def test_an_update_whose_only_page_failed_is_a_document(self):
        self.store(document((grey(),)))
        session = self.update()
        self.assertEqual(session.page(grey(), Compression.CCITT, CADWICK), 15)
        self.assertEqual(session.finish(), 0)
        self.assertEqual(self.tool("qpdf", "--check", self.path).returncode, 0)
        self.assertEqual(sorrelin.page_count(self.path), 1)

    def test_an_update_in_memory_succeeds_and_no_page_is_found_in_it(self):
        session = Session()
        self.assertEqual(session.create_in_memory(document((grey(),))), 0)
        self.assertEqual(session.page(grey()), 0)
        code, updated = session.finish_in_memory()
        self.assertEqual(code, 0)
        self.store(updated)
        self.assertNotEqual(self.tool("pdfinfo", self.path).returncode, 0)
        with self.assertRaises(sorrelin.PdfError):
            PdfReader(updated)

    def test_object_streams_are_refused_and_unpacking_helps(self):
        self.store(document((grey(),)))
        self.tool("qpdf", "--object-streams=generate", self.path, "packed.pdf")
        before = (self.folder / "packed.pdf").read_bytes()
        session = Session()
        self.assertEqual(session.create(self.folder / "packed.pdf"), 25)
        session.close()
        self.assertEqual((self.folder / "packed.pdf").read_bytes(), before)
        self.tool("qpdf", "--object-streams=disable", "packed.pdf", self.path)
        self.assertEqual(self.update((grey(),)).finish(), 0)
        self.assertEqual(self.tool("qpdf", "--check", self.path).returncode, 0)

    def test_updating_an_encrypted_document_destroys_it(self):
        self.store(document((grey(),)))
        self.tool("qpdf", "--object-streams=disable", "--encrypt", "", "x", "256", "--",
                  "--replace-input", self.path)
        self.assertEqual(self.tool("qpdf", "--check", self.path).returncode, 0)
        self.assertEqual(self.update((grey(),)).finish(), 0)
        self.assertIn("/Encrypt in trailer dictionary is not a dictionary",
                      self.tool("qpdf", "--check", self.path).stderr)

    def test_what_is_no_document_is_left_as_it_is(self):
        before = self.store(b"a letter and no document, longer than fifty bytes all the same")
        session = Session()
        self.assertEqual(session.create(self.path), 24)
        session.close()
        self.assertEqual(self.path.read_bytes(), before)

    def test_strings_are_not_written(self):
        self.store(document((grey(),)))
        session = Session()
        LIBRARY.pdf_SetTitleW(session.handle, sorrelin._library.wide("New"))
        self.assertEqual((session.create(self.path), session.page(grey()), session.finish()),
                         (0, 0, 0))
        self.assertIn("Converted Document", self.tool("pdfinfo", self.path).stdout)

    def test_a_file_that_is_being_written_is_in_use(self):
        session, other = Session(), Session()
        self.assertEqual(session.create(self.path), 0)
        self.assertEqual((other.create(self.path), other.text()), (1, "The file is in use"))
        with self.assertRaises(sorrelin.PdfError) as caught:
            PdfReader(self.path)
        self.assertEqual(caught.exception.code, 23)
        session.close()


class Codecs(EdgeTest):
    def test_a_name_that_leads_nowhere(self):
        self.assertEqual(refusal(bitmap(8, 8, 1, bytes(40)), Compression.CCITT), 19)
        self.assertEqual(refusal(bitmap(8, 8, 24, bytes(192)), Compression.JPEG), 21)

    def test_a_jpeg_library_without_its_entry_point_hangs(self):
        # Any library without that name will do: the Group 4 coder has it not.
        with self.assertRaises(subprocess.TimeoutExpired):
            subprocess.run([sys.executable, "-c", "import sys; sys.path.insert(0, %r)\n"
                            "from sharp_edges_test import *\n"
                            "refusal(bitmap(8, 8, 24, bytes(192)), 7, CADWICK)" %
                            str(pathlib.Path(__file__).parent)], timeout=5, check=False,
                           capture_output=True)


class Reading(EdgeTest):
    def test_a_number_of_100_digits_ends_the_process(self):
        # The digits stand in the last object, so that no offset changes but that of the table.
        data = document((grey(),))
        at = data.rindex(b"/Pages 3 0 R")
        longer = data[:at] + b"/Pages " + b"1" * 100 + b" 0 R" + data[at + 12:]
        start = re.search(rb"startxref\n(\d+)", data)
        moved = str(int(start[1]) + len(longer) - len(data)).encode()
        self.store(longer.replace(start[0], b"startxref\n" + moved))
        done = in_own_process(f"PdfReader({str(self.path)!r})")
        self.assertEqual((done.returncode, done.stderr.count("\n")), (-6, 1))

    def test_a_page_without_an_image_is_null_and_no_code(self):
        data = replaced(document((grey(),)), b"/XObject <<", b"/YObject <<")
        with self.assertRaises(sorrelin.PdfError) as caught:
            image(data)
        self.assertEqual(caught.exception.code, 0)

    def test_the_count_is_what_the_document_claims_and_stays(self):
        data = replaced(document((grey(),)), b"/Count 1", b"/Count 7")
        session = Session()
        LIBRARY.pdf_OpenPDFInMemory(session.handle, data, len(data))
        self.assertEqual(LIBRARY.pdf_GetNumberOfPages(session.handle), 7)
        self.assertIn(LIBRARY.pdf_LoadImageFromPDF(session.handle, 3), (None, 0))
        session.close()
        self.assertEqual(LIBRARY.pdf_GetNumberOfPages(session.handle), 7)

    def test_grey_of_8_bits_without_a_palette_is_taken_for_colours(self):
        ramp = bytes(range(64))
        data = document((bitmap(8, 8, 8, GREYS + b"".join(
            ramp[y * 8:y * 8 + 8] for y in reversed(range(8)))), Compression.NONE))
        space = re.search(rb"/ColorSpace \[/Indexed /DeviceRGB 255 \d+ 0 R \]", data)[0]
        back = image(replaced(data, space, b"/ColorSpace /DeviceGray"))
        self.assertEqual(back.bits, 24)
        self.assertEqual(back.pixels.tolist()[0][:2], [[0, 1, 2], [3, 4, 5]])
        self.assertEqual(set(bytes(back.pixels)[3 * 8 * 3:]), {0})

    def test_raw_data_that_begin_with_blanks_lose_them(self):
        pixels = b" \n[A" + bytes([65]) * 60
        data = document((bitmap(8, 8, 8, GREYS + b"".join(
            pixels[y * 8:y * 8 + 8] for y in reversed(range(8)))), Compression.NONE))
        self.assertEqual(bytes(image(data).pixels), b"A" * 61 + b">\ne")

    def test_predictors_are_not_undone(self):
        rows = b"".join(b"\0" + bytes([200]) * 8 for _ in range(8))
        data = flate_document(zlib.compress(rows), b"/DecodeParms << /Predictor 15 /Columns 8 >>")
        with self.assertRaises(sorrelin.PdfError) as caught:
            image(data)
        self.assertEqual(caught.exception.code, 27)

    def test_flate_data_that_break_off_leave_zeros(self):
        stored = zlib.compress(bytes([200]) * 64, 0)
        pixels = bytes(image(flate_document(stored[:-40])).pixels)
        self.assertEqual((pixels[0], pixels[-1]), (200, 0))

    def test_resolution_is_that_of_a_whole_page(self):
        data = document((bitmap(8, 35, 8, GREYS + bytes(280), per_metre=11811),))
        # 35 rows on 8 points: 35 * 2834 / 8 pixels a metre.
        self.assertAlmostEqual(image(data).dpi[1], 35 * 2834 / 8 * 0.0254, delta=0.05)
        self.assertAlmostEqual(image(data).dpi[1], 315, delta=0.2)

    def test_encrypted_documents_open(self):
        self.store(document((grey(9), Compression.NONE)))
        self.tool("qpdf", "--object-streams=disable", "--encrypt", "", "x", "256", "--",
                  "--replace-input", self.path)
        with PdfReader(self.path) as pdf:
            self.assertEqual(len(pdf), 1)
            try:
                self.assertNotEqual(set(bytes(pdf[0].pixels)), {9})
            except sorrelin.PdfError as error:
                self.assertNotEqual(error.code, 37)


def flate_document(coded, parameters=b""):
    """A document of another program: a page of 8 by 8 grey pixels from Flate data."""
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>",
               b"<< /Type /Pages /Count 1 /Kids [ 3 0 R ] >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 8 8] /Resources << /XObject "
               b"<< /Im 4 0 R >> >> >>",
               b"<< /Type /XObject /Subtype /Image /Width 8 /Height 8 /BitsPerComponent 8 "
               b"/ColorSpace [/Indexed /DeviceRGB 255 5 0 R ] /Filter /FlateDecode %s /Length %d "
               b">>\nstream\n%s\nendstream" % (parameters, len(coded), coded),
               b"<< /Length 768 >>\nstream\n%s\nendstream" %
               bytes(grey for grey in range(256) for _ in range(3))]
    data, offsets = b"%PDF-1.4\n", []
    for number, text in enumerate(objects, 1):
        offsets.append(len(data))
        data += b"%d 0 obj\n%s\nendobj\n" % (number, text)
    table = b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    return data + (b"xref\n0 6\n0000000000 65535 f \n%strailer\n<< /Size 6 /Root 1 0 R >>\n"
                   b"startxref\n%d\n%%%%EOF\n" % (table, len(data)))


class Errors(EdgeTest):
    def test_the_text_of_code_1_is_that_of_now(self):
        session = Session()
        self.assertEqual(session.create(self.folder / "none" / "a.pdf"), 1)
        self.assertEqual(session.text(), "No such file or directory")
        LIBRARY.GlobalLock(12345)  # another failure: 6
        self.assertNotEqual(session.text(), "No such file or directory")

    def test_codes_stay(self):
        session = Session()
        self.assertEqual((session.code(), session.text()), (32, "PDF Object not initialized"))
        self.assertEqual(session.page(grey()), 2)
        self.assertEqual(LIBRARY.pdf_SetTitleW(session.handle, sorrelin._library.wide("a")), 0)
        self.assertEqual(session.code(), 2)

    def test_the_text_call_gives_1_0_or_2(self):
        session, buffer = Session(), ctypes.create_string_buffer(1024)
        self.assertEqual([LIBRARY.pdf_GetLastPDFErrorText(session.handle, buffer),
                          LIBRARY.pdf_GetLastPDFErrorText(session.handle, None),
                          LIBRARY.pdf_GetLastPDFErrorText(0, buffer)], [1, 0, 2])

    def test_a_close_of_nothing_faults(self):
        for name in ("pdf_ClosePDFFile", "pdf_ClosePDFInMemory"):
            self.assertEqual(in_own_process(f"LIBRARY.{name}(0)").returncode, -11)


if __name__ == "__main__":
    unittest.main()

"""Coded pictures, file objects and slices of the Python module."""

import io
import pathlib
import tempfile
import unittest

import PIL.Image

import sorrelin


def jpeg(mode="RGB", **options):
    file = io.BytesIO()
    PIL.Image.new(mode, (72, 36), 100).save(file, "JPEG", **options)
    return file.getvalue()


class CodedPictures(unittest.TestCase):
    def test_a_jpeg_file_is_in_the_document_byte_for_byte(self):
        for mode in ("RGB", "L"):
            with sorrelin.PdfWriter(None) as pdf:
                pdf.add_jpeg(jpeg(mode))
            self.assertIn(jpeg(mode), pdf.getvalue())
            self.assertEqual(len(sorrelin.PdfReader(pdf.getvalue())), 1)

    def test_the_file_s_resolution_gives_the_page_its_size(self):
        with sorrelin.PdfWriter(None) as pdf:
            pdf.add_jpeg(jpeg(dpi=(144, 144)))
        self.assertIn(b"36.0000 0.0000 0.0000  18.0000 0.0000 0.0000 cm", pdf.getvalue())

    def test_white_group_4_rows_come_back_white(self):
        # One bit 1 a row is the row above, here white; then the end of the block.
        with sorrelin.PdfWriter(None) as pdf:
            pdf.add_group4(bytes((0xFF, 0xFF, 0x00, 0x10, 0x01)), 32, 16, dpi=72)
        with sorrelin.PdfReader(pdf.getvalue()) as read:
            self.assertEqual(read[0].pixels.tolist(), [[True] * 32] * 16)

    def test_what_is_no_jpeg_file_has_the_library_s_code(self):
        with self.assertRaises(sorrelin.PdfError) as caught, sorrelin.PdfWriter(None) as pdf:
            pdf.add_jpeg(b"no picture")
        self.assertEqual(caught.exception.code, 27)

    def test_an_update_refuses_them_and_goes_on(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "document.pdf")
            with sorrelin.PdfWriter(path, "a") as pdf:
                pdf.add_jpeg(jpeg())
            with sorrelin.PdfWriter(path, "a") as pdf:
                with self.assertRaisesRegex(ValueError, "new documents only"):
                    pdf.add_jpeg(jpeg())
                with self.assertRaisesRegex(ValueError, "new documents only"):
                    pdf.add_group4(b"\0\x10\x01", 8, 1)
                pdf.add_page(bytes(400), size=(20, 20), bits=8)
            with sorrelin.PdfReader(path) as read:
                self.assertEqual([image.width for image in read], [72, 20])


class Files(unittest.TestCase):
    def test_file_objects_are_target_and_source(self):
        file = io.BytesIO()
        with sorrelin.PdfWriter(file) as pdf:
            pdf.add_jpeg(jpeg())
        file.seek(0)
        with sorrelin.PdfReader(file) as read:
            self.assertEqual(read[0].width, 72)

    def test_an_exception_leaves_a_file_object_untouched(self):
        file = io.BytesIO()
        with self.assertRaises(ZeroDivisionError), sorrelin.PdfWriter(file) as pdf:
            pdf.add_jpeg(jpeg())
            raise ZeroDivisionError
        self.assertEqual(file.getvalue(), b"")

    def test_a_slice_is_a_list_of_pictures(self):
        with sorrelin.PdfWriter(None) as pdf:
            for width in (10, 20, 30):
                pdf.add_page(bytes(width), size=(width, 1), bits=8, dpi=20)
        with sorrelin.PdfReader(pdf.getvalue()) as read:
            self.assertEqual([image.width for image in read[1:]], [20, 30])
            self.assertEqual([image.width for image in read[::-1]], [30, 20, 10])


if __name__ == "__main__":
    unittest.main()

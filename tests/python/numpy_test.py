"""The Python module with NumPy's arrays in and out."""

import unittest

import numpy

import sorrelin


def round_trip(array, **options):
    with sorrelin.PdfWriter(None) as pdf:
        pdf.add_page(array, **options)
    with sorrelin.PdfReader(pdf.getvalue()) as read:
        return read[0]


class Arrays(unittest.TestCase):
    def setUp(self):
        self.random = numpy.random.default_rng(1)

    def test_each_kind_comes_back_equal_and_of_its_type(self):
        for array in (self.random.integers(0, 256, (50, 33), dtype=numpy.uint8),
                      self.random.integers(0, 256, (50, 33, 3), dtype=numpy.uint8),
                      self.random.integers(0, 2, (50, 33)).astype(bool)):
            back = numpy.asarray(round_trip(array))
            self.assertEqual(back.dtype, array.dtype)
            numpy.testing.assert_array_equal(back, array)

    def test_views_need_not_be_contiguous(self):
        array = self.random.integers(0, 256, (40, 60, 3), dtype=numpy.uint8)
        for view in (array[::2, ::-1], array[:, :, ::-1], array.transpose(1, 0, 2)):
            numpy.testing.assert_array_equal(numpy.asarray(round_trip(view)), view)

    def test_pixels_are_not_copied_on_the_way_to_an_array(self):
        image = round_trip(numpy.zeros((4, 4), numpy.uint8))
        self.assertTrue(numpy.shares_memory(numpy.asarray(image), numpy.asarray(image.pixels)))

    def test_an_array_is_a_palette_too(self):
        palette = self.random.integers(0, 256, (256, 3), dtype=numpy.uint8)
        indices = self.random.integers(0, 256, (10, 10), dtype=numpy.uint8)
        image = round_trip(indices, palette=palette)
        numpy.testing.assert_array_equal(numpy.asarray(image), palette[indices])

    def test_a_palette_may_hold_integers_of_any_size(self):
        palette = numpy.array([[1, 2, 3], [40, 50, 60]])
        indices = self.random.integers(0, 2, (10, 10), dtype=numpy.uint8)
        image = round_trip(indices, palette=palette)
        numpy.testing.assert_array_equal(numpy.asarray(image), palette[indices])

    def test_floating_point_is_refused(self):
        with self.assertRaises(TypeError):
            round_trip(numpy.zeros((4, 4)))

    def test_an_a4_scan_of_300_dpi_comes_back_equal(self):
        page = self.random.random((3508, 2480)) > 0.02
        numpy.testing.assert_array_equal(numpy.asarray(round_trip(page, dpi=300)), page)


if __name__ == "__main__":
    unittest.main()

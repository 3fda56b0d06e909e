"""PIL's pictures as pages."""

import struct
import unittest
import warnings

import PIL.Image

import sorrelin


def picture(mode):
    image = PIL.Image.new("RGB", (37, 20))
    image.putdata([(x * 7 % 256, y * 12 % 256, (x + y) % 256) for y in range(20) for x in range(37)])
    return image.convert(mode)


def round_trip(image):
    with sorrelin.PdfWriter(None) as pdf:
        pdf.add_page(image)
    with sorrelin.PdfReader(pdf.getvalue()) as read:
        return read[0]


class Pictures(unittest.TestCase):
    def test_bilevel_grey_and_colour_come_back_equal(self):
        for mode, bits in (("1", 1), ("L", 8), ("RGB", 24)):
            with self.subTest(mode=mode):
                image = picture(mode)
                back = round_trip(image)
                self.assertEqual(back.bits, bits)
                values = bytes(back.pixels)
                if mode == "1":
                    values = bytes(255 * value for value in values)
                self.assertEqual(values, image.convert("L").tobytes() if bits == 1
                                 else image.tobytes())

    def test_a_palette_stays_a_palette(self):
        image = picture("RGB").quantize(16)
        back = round_trip(image)
        self.assertEqual(back.bits, 8)
        self.assertEqual(bytes(back.indices), image.tobytes())
        self.assertEqual(bytes(back.pixels), image.convert("RGB").tobytes())

    def test_other_modes_are_converted_with_a_warning(self):
        with self.assertWarns(UserWarning):
            back = round_trip(picture("RGB").convert("CMYK"))
        self.assertEqual(back.bits, 24)

    def test_what_is_transparent_is_laid_on_white(self):
        for mode, paint in (("RGBA", (9, 9, 9)), ("LA", (9,))):
            image = PIL.Image.new(mode, (20, 10), (*paint, 0))
            image.putpixel((0, 0), (*paint, 255))
            with self.assertWarns(UserWarning):
                pixels = round_trip(image).pixels.tolist()
            self.assertEqual(pixels[0][:2], [[9, 9, 9], [255, 255, 255]])

    def test_so_are_pixels_of_a_transparent_colour(self):
        palette = PIL.Image.new("P", (20, 10), 3)
        palette.putpalette([9] * 9 + [77] * 3)
        for image, clear, seen in ((palette, 3, 2), (PIL.Image.new("L", (20, 10), 77), 77, 9),
                                   (PIL.Image.new("RGB", (20, 10), (77,) * 3), (77,) * 3, (9,) * 3)):
            image.info["transparency"] = clear
            image.putpixel((0, 0), seen)
            with self.subTest(mode=image.mode), self.assertWarns(UserWarning):
                pixels = round_trip(image).pixels.tolist()
                self.assertEqual(pixels[0][:2], [[9, 9, 9], [255, 255, 255]])

    def test_a_palette_of_the_caller_s_replaces_a_transparent_colour(self):
        image = PIL.Image.new("P", (20, 10), 1)
        image.info["transparency"] = 1
        with warnings.catch_warnings(), sorrelin.PdfWriter(None) as pdf:
            warnings.simplefilter("error")
            pdf.add_page(image, palette=[(0, 0, 0), (7, 8, 9)])
        with sorrelin.PdfReader(pdf.getvalue()) as read:
            self.assertEqual(read[0].pixels.tolist()[0][0], [7, 8, 9])

    def test_16_bits_of_grey_keep_their_upper_8(self):
        values = [x * 65535 // 19 for x in range(20)]
        wide = PIL.Image.frombytes("I;16", (20, 1), struct.pack("<20H", *values))
        for image in (wide, wide.convert("I")):
            with self.assertWarnsRegex(UserWarning, "added as L"):
                back = round_trip(image)
            self.assertEqual(back.bits, 8)
            self.assertEqual(back.pixels.tolist(), [[value // 256 for value in values]])

    def test_the_modes_that_fit_give_no_warning(self):
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            round_trip(picture("L"))

    def test_the_resolution_is_the_picture_s_own(self):
        for mode in ("L", "RGBA", "LA", "CMYK", "I;16"):
            image = PIL.Image.new(mode, (100, 100))
            image.info["dpi"] = (100, 100)
            with self.subTest(mode=mode), warnings.catch_warnings():
                warnings.simplefilter("ignore")
                x, y = round_trip(image).dpi
                self.assertAlmostEqual(x, 100, delta=0.2)
                self.assertAlmostEqual(y, 100, delta=0.2)


if __name__ == "__main__":
    unittest.main()

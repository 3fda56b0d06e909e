"""Pictures on their way between Python's buffers and the library's packed bitmaps."""

from __future__ import annotations

import ctypes
import importlib
import struct
import warnings
from typing import Any, Tuple, Union

Resolution = Union[float, Tuple[float, float]]

_GHND = 0x42  # a movable, zeroed block
_HEADER = struct.Struct("<IiiHHIIiiII")  # BITMAPINFOHEADER
_METRES_PER_INCH = 0.0254


class Image:
    """The image of a page.

    width, height     in pixels
    bits              1, 8 or 24 bits a pixel, as the image is stored
    dpi               dots per inch in x and y, from the size of the page; pages are whole points
                      large, so they are near what went in and seldom equal to it
    pixels            a memoryview: bilevel (True is white), grey, or red, green, blue
    palette, indices  of an 8-bit image whose palette is no ramp of greys: 256 times red, green,
                      blue as bytes, and a memoryview of shape (height, width) into it; else None
    """

    def __init__(self, width: int, height: int, bits: int, dpi: tuple[float, float],
                 pixels: memoryview, palette: bytes | None = None,
                 indices: memoryview | None = None) -> None:
        self.width = width
        self.height = height
        self.bits = bits
        self.dpi = dpi
        self.pixels = pixels
        self.palette = palette
        self.indices = indices

    @property
    def __array_interface__(self) -> dict[str, Any]:
        """Makes numpy.asarray(image) an array of `pixels`, without a copy."""
        kind = "|b1" if self.pixels.format == "?" else "|u1"
        return {"version": 3, "shape": self.pixels.shape, "typestr": kind, "data": self.pixels}

    def __repr__(self) -> str:
        return f"<sorrelin.Image {self.width}x{self.height}, {self.bits} bits>"


class Picture:
    """Pixels as add_page takes them: `rows` has the top row first, without padding."""

    def __init__(self, pixels: Any, size: tuple[int, int] | None, bits: int | None,
                 palette: Any) -> None:
        view = memoryview(pixels)
        if view.ndim == 1:
            self._take_flat(view, size, bits)
        elif size is not None or bits is not None:
            raise ValueError("size and bits belong to flat bytes; this buffer has a shape")
        else:
            self._take_shaped(view)
        if self.width < 1 or self.height < 1:
            raise ValueError("a picture has at least one pixel")
        if palette is not None and self.bits != 8:
            raise ValueError("a palette belongs to pictures of 8 bits a pixel")
        self.colours = colour_table(self.bits, palette)

    def _take_flat(self, view: memoryview, size: tuple[int, int] | None,
                   bits: int | None) -> None:
        if size is None or bits not in (1, 8, 24):
            raise ValueError("flat bytes need size=(width, height) and bits=1, 8 or 24")
        self.width, self.height = size
        self.bits = bits
        self.rows = view.tobytes()
        wanted = bytes_of_row(self.width, bits) * self.height
        if len(self.rows) != wanted:
            raise ValueError(f"{self.width}x{self.height} pixels of {bits} bits take {wanted} "
                             f"bytes, not {len(self.rows)}")

    def _take_shaped(self, view: memoryview) -> None:
        shape = tuple(view.shape or ())
        if len(shape) == 3 and shape[2] == 1:
            shape = shape[:2]
        self.height, self.width = shape[:2]
        if len(shape) == 2 and view.format == "?":
            self.bits = 1
            self.rows = pack(view.tobytes(), self.width, self.height)
        elif view.format == "B" and len(shape) == 2:
            self.bits, self.rows = 8, view.tobytes()
        elif view.format == "B" and len(shape) == 3 and shape[2] == 3:
            self.bits, self.rows = 24, view.tobytes()
        else:
            raise TypeError(f"pixels of shape {view.shape} and format {view.format!r}: bilevel, "
                            "8 bits or red, green, blue of 8 bits each are wanted")


def of_pil(image: Any, palette: Any, dpi: Resolution | None) -> tuple[
        bytes, tuple[int, int], int, Any, Resolution | None]:
    """The flat bytes, size, depth, palette and resolution of a PIL.Image."""
    if dpi is None and "dpi" in image.info:
        x, y = image.info["dpi"]
        dpi = (float(x), float(y)) if x >= 1 and y >= 1 else None
    # A palette of the caller's takes the place of the picture's colours, the transparent one too.
    has_clear_colour = "transparency" in image.info and palette is None
    if image.mode not in ("1", "L", "P", "RGB") or has_clear_colour:
        converted = with_plain_mode(image)
        warnings.warn(f"a picture of mode {image.mode} is added as {converted.mode}", stacklevel=3)
        image = converted
    if image.mode == "P" and palette is None:
        palette = bytes(image.getpalette())
    bits = {"1": 1, "L": 8, "P": 8, "RGB": 24}[image.mode]
    return image.tobytes(), image.size, bits, palette, dpi


def with_plain_mode(image: Any) -> Any:
    """A PIL.Image of mode L for 16 bits of grey, else RGB, laid on white where it is transparent."""
    if image.mode.startswith("I"):
        return image.convert("I").point(lambda value: value / 256).convert("L")
    if image.mode in ("RGBA", "LA", "PA") or "transparency" in image.info:
        pil = importlib.import_module("PIL.Image")
        image = pil.alpha_composite(pil.new("RGBA", image.size, "white"), image.convert("RGBA"))
    return image.convert("RGB")


def bytes_of_row(width: int, bits: int) -> int:
    return (width * bits + 7) // 8


def stride_of(width: int, bits: int) -> int:
    return (width * bits + 31) // 32 * 4


def pack(values: bytes, width: int, height: int) -> bytes:
    """Bits from one byte a pixel (0 or not), rows of whole bytes."""
    digits = values.translate(b"0" + b"1" * 255).decode("ascii")
    row_bytes = bytes_of_row(width, 1)
    rows = (digits[y * width:(y + 1) * width].ljust(row_bytes * 8, "0") for y in range(height))
    return b"".join(int(row, 2).to_bytes(row_bytes, "big") for row in rows) if width else b""


def unpack(rows: bytes, width: int, height: int) -> bytes:
    """One byte a pixel, 0 or 1, from rows of whole bytes."""
    row_bytes = bytes_of_row(width, 1)
    digits = (bin(1 << row_bytes * 8 |
                  int.from_bytes(rows[y * row_bytes:(y + 1) * row_bytes], "big"))
              for y in range(height))
    table = bytes.maketrans(b"01", b"\0\1")
    return b"".join(row[3:3 + width].encode("ascii").translate(table) for row in digits)


def exchange_red_and_blue(pixels: bytes) -> bytes:
    exchanged = bytearray(pixels)
    exchanged[0::3] = pixels[2::3]
    exchanged[2::3] = pixels[0::3]
    return bytes(exchanged)


def colour_table(bits: int, palette: Any) -> bytes:
    """RGBQUAD entries: blue, green, red, 0."""
    if bits == 24:
        return b""
    if bits == 1:
        return bytes((0, 0, 0, 0, 255, 255, 255, 0))
    if palette is None:
        return b"".join(bytes((grey, grey, grey, 0)) for grey in range(256))
    if isinstance(palette, (bytes, bytearray)):
        flat = bytes(palette)
    else:
        colours = [bytes(tuple(colour)) for colour in palette]  # whatever kind of integers they are
        if any(len(colour) != 3 for colour in colours):
            raise ValueError("a colour of a palette is red, green, blue")
        flat = b"".join(colours)
    if len(flat) % 3 != 0 or not 0 < len(flat) <= 768:
        raise ValueError("a palette is 1 to 256 times red, green, blue")
    table = b"".join(bytes((flat[i + 2], flat[i + 1], flat[i], 0))
                     for i in range(0, len(flat), 3))
    return table.ljust(1024, b"\0")


def pixels_per_metre(dpi: Resolution | None) -> tuple[int, int]:
    if dpi is None:
        return 0, 0
    x, y = dpi if isinstance(dpi, (tuple, list)) else (dpi, dpi)
    result = round(x / _METRES_PER_INCH), round(y / _METRES_PER_INCH)
    if not all(20 <= value < 1 << 31 for value in result):  # 20 a metre is half a dot per inch
        raise ValueError(f"a resolution of {x} by {y} dots per inch")
    return result


def check_page_size(picture: Picture, resolution: tuple[int, int]) -> None:
    """The library writes no page for a picture that comes to less than half a point."""
    for pixels, per_metre in zip((picture.width, picture.height), resolution):
        dpi = int(per_metre * _METRES_PER_INCH + 0.5) or 96
        if int(pixels * 72 / dpi + 0.5) == 0:
            raise ValueError(f"{pixels} pixels at {dpi} dots per inch are less than half a point")


def block_of(library: ctypes.CDLL, picture: Picture, resolution: tuple[int, int]) -> int:
    """A new global block with the packed bitmap: header, colour table, rows from the lowest up."""
    width, height = picture.width, picture.height
    rows = exchange_red_and_blue(picture.rows) if picture.bits == 24 else picture.rows
    row_bytes, stride = bytes_of_row(width, picture.bits), stride_of(width, picture.bits)
    padding = bytes(stride - row_bytes)
    header = _HEADER.pack(40, width, height, 1, picture.bits, 0, stride * height, *resolution, 0, 0)
    lines = (rows[y * row_bytes:(y + 1) * row_bytes] + padding for y in reversed(range(height)))
    dib = b"".join((header, picture.colours, *lines))
    block: int = library.GlobalAlloc(_GHND, len(dib))
    address = library.GlobalLock(block) if block else None
    if not address:
        raise MemoryError(f"a bitmap of {len(dib)} bytes")
    ctypes.memmove(address, dib, len(dib))
    library.GlobalUnlock(block)
    return block


def bytes_of(library: ctypes.CDLL, block: int) -> bytes:
    address = library.GlobalLock(block)
    if not address:
        raise MemoryError("a bitmap cannot be locked")
    try:
        return ctypes.string_at(address, library.GlobalSize(block))
    finally:
        library.GlobalUnlock(block)


def image_of(dib: bytes) -> Image:
    """The image of a packed bitmap as the library rebuilds it."""
    (size, width, height, _, bits, _, _, x_per_metre, y_per_metre, used, _) = \
        _HEADER.unpack_from(dib)
    colours = used or (1 << bits if bits <= 8 else 0)
    at, row_bytes, stride = size + 4 * colours, bytes_of_row(width, bits), stride_of(width, bits)
    rows = b"".join(dib[at + y * stride:at + y * stride + row_bytes]
                    for y in reversed(range(height)))
    table = dib[size:at]
    dpi = (x_per_metre * _METRES_PER_INCH, y_per_metre * _METRES_PER_INCH)
    if bits == 24:
        pixels = memoryview(exchange_red_and_blue(rows)).cast("B", (height, width, 3))
        return Image(width, height, bits, dpi, pixels)
    if bits == 1:
        return Image(width, height, bits, dpi, bilevel(rows, table, width, height))
    return image_of_indices(width, height, dpi, rows, table)


def bilevel(rows: bytes, table: bytes, width: int, height: int) -> memoryview:
    """True where the pixel has the brighter colour of the table."""
    values = unpack(rows, width, height)
    if sum(table[:3]) > sum(table[4:7]):
        values = values.translate(b"\1\0" + bytes(254))
    return memoryview(values).cast("?", (height, width))


def image_of_indices(width: int, height: int, dpi: tuple[float, float], rows: bytes,
                      table: bytes) -> Image:
    table = table.ljust(1024, b"\0")
    blue, green, red = (table[i:1024:4] for i in range(3))
    indices = memoryview(rows).cast("B", (height, width))
    if blue == green == red == bytes(range(256)):
        return Image(width, height, 8, dpi, indices)
    pixels, palette = bytearray(3 * len(rows)), bytearray(768)
    for i, channel in enumerate((red, green, blue)):
        pixels[i::3] = rows.translate(channel)
        palette[i::3] = channel
    return Image(width, height, 8, dpi, memoryview(bytes(pixels)).cast("B", (height, width, 3)),
                 bytes(palette), indices)

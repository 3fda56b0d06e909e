"""Bitmaps to PDF documents and back: the Sorrelin library for Python, in this one file.

    import sorrelin

    with sorrelin.PdfWriter("scan.pdf", title="Two pages") as pdf:
        pdf.add_page(page, dpi=300)             # a NumPy array, or any other buffer
        pdf.add_page(photo, dpi=150, compression=sorrelin.Compression.JPEG, quality=85)

    with sorrelin.PdfReader("scan.pdf") as pdf:
        image = pdf[0]
        print(image.width, image.height, image.dpi)
        array = numpy.asarray(image)

Pixels go in and come out with the top row first, as objects with the buffer protocol:

    shape (height, width), format "?"    bilevel, True is white
    shape (height, width), format "B"    8 bits of grey, or indices into a palette
    shape (height, width, 3), format "B" red, green, blue

NumPy's arrays are such objects; NumPy itself is not needed. What fails in the library raises
PdfError with the library's code and text; arguments that cannot work raise ValueError or TypeError
before the library sees them.

The library is looked for in this order: the file that the environment variable SORRELIN_LIBRARY
names, then libsorrelin.so.13 and libsorrelin.so beside this file, then by those names as the system
searches. It is loaded on first use. It writes a line to the process's standard output when it is
loaded and when the process ends, unless it was built with SORRELIN_LOAD_LINE off.

A writer or reader is for one thread at a time; several of them may work at the same time, as the
interpreter's lock is released during a call.
"""

from __future__ import annotations

import ctypes
import enum
import functools
import os
import pathlib
import struct
import sys
from collections.abc import Iterator, Sequence
from typing import Any, Union

__all__ = ["Compression", "Image", "PdfError", "PdfReader", "PdfWriter", "page_count"]

Path = Union[str, "os.PathLike[str]"]
Resolution = Union[float, "tuple[float, float]"]

_INVALID = (None, 0, ctypes.c_void_p(-1).value)  # handles that are none
_GHND = 0x42  # a movable, zeroed block
_HEADER = struct.Struct("<IiiHHIIiiII")  # BITMAPINFOHEADER
_METRES_PER_INCH = 0.0254
_MAX_INFO_UNITS = {"title": 252, "author": 252, "subject": 252, "keywords": 251}
_CODECS = {6: "Cadwick.dll", 7: "Rennick.dll"}
_ERROR_TEXT_BYTES = 4096


class Compression(enum.IntEnum):
    """How a page's image is coded."""

    NONE = 0
    FLATE = 4
    RUN_LENGTH = 5  # 8 bits a pixel only
    CCITT = 6  # Group 4; bilevel only
    JPEG = 7  # grey and colour, with loss


class PdfError(Exception):
    """A call of the library failed: `code` is its number, `text` its message."""

    def __init__(self, code: int, text: str, what: str) -> None:
        super().__init__(f"{what}: {text} (code {code})")
        self.code = code
        self.text = text


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


class _Session:
    """A session of the library, and its failures as exceptions."""

    def __init__(self) -> None:
        self.core = _library()
        handle = ctypes.c_int64()
        code = self.core.pdf_Init_PDF(ctypes.byref(handle))
        if code != 0:
            raise PdfError(code, "no session", "pdf_Init_PDF")
        self.handle = handle.value

    def text(self) -> str:
        buffer = ctypes.create_string_buffer(_ERROR_TEXT_BYTES)
        self.core.pdf_GetLastPDFErrorText(self.handle, buffer)
        return buffer.value.decode("utf-8", "replace")

    def check(self, code: int, what: str) -> None:
        if code != 0:
            raise PdfError(code, self.text(), what)

    def release(self) -> None:
        if self.handle:
            self.core.pdf_Release_PDF(self.handle)
            self.handle = 0


class PdfWriter:
    """Writes a document page by page; a context manager that finishes it at the end.

    `target` is a file's path, or None for a document in memory. `mode` tells what becomes of a file
    that exists:

        "w"  the new document takes its place when it is finished; until then it stands
        "x"  FileExistsError
        "a"  it is updated: the new pages go behind its own, in the same file

    title, author, subject and keywords have at most 252 UTF-16 units (keywords 251), are fixed when
    the document is started, and cannot be changed by an update.

    An exception in the `with` block discards a new document. An update cannot be taken back: the
    pages that were added stay, and the file is finished with them.
    """

    def __init__(self, target: Path | None, mode: str = "w", *, title: str = "", author: str = "",
                 subject: str = "", keywords: str = "") -> None:
        if mode not in ("w", "x", "a"):
            raise ValueError(f"mode {mode!r} is none of 'w', 'x', 'a'")
        if target is None and mode == "a":
            raise ValueError("a document in memory cannot be updated: write it to a file first")
        strings = {"title": title, "author": author, "subject": subject, "keywords": keywords}
        _check_strings(strings)
        self._path = None if target is None else os.path.abspath(os.fspath(target))
        exists = self._path is not None and os.path.lexists(self._path)
        self._update = exists and mode == "a"
        if exists and mode == "x":
            raise FileExistsError(f"{self._path} exists")
        if self._update and any(strings.values()):
            raise ValueError("an update keeps the strings of the document")
        self._exclusive = mode == "x"
        self._written_to = self._path if self._update or not self._path else self._new_name()
        self._document: bytes | None = None
        self._pages_tried = False
        self._session: _Session | None = _Session()
        try:
            self._start(self._session, strings)
        except BaseException:
            self._give_up()
            raise

    def add_page(self, pixels: Any, *, dpi: Resolution | None = None,
                 palette: Sequence[Sequence[int]] | bytes | None = None,
                 compression: Compression | int | None = None, quality: int | None = None,
                 size: tuple[int, int] | None = None, bits: int | None = None,
                 codec: str | None = None) -> None:
        """Adds a picture as a page of its own size: its pixels at `dpi` dots per inch.

        pixels       see above; or flat bytes, with `size` (width, height) and `bits`: 1 (rows
                     of whole bytes, the leftmost pixel in the highest bit, 1 is white), 8 or 24
        dpi          one number, or one for x and one for y; without, 96
        palette      for 8 bits: up to 256 times red, green, blue; without, a ramp of greys
        compression  without, Group 4 for bilevel pictures and Flate for others
        quality      0 to 9 for Flate, 1 to 100 for JPEG; without, the library's default
        codec        the library that codes Group 4 or JPEG, a name or a path; without, the
                     library's own
        """
        session = self._open_session()
        picture = _Picture(pixels, size, bits, palette)
        resolution = _pixels_per_metre(dpi)
        _check_page_size(picture, resolution)
        if compression is None:
            compression = Compression.CCITT if picture.bits == 1 else Compression.FLATE
        codec = _CODECS.get(int(compression), "") if codec is None else codec
        block = _block_of(session.core, picture, resolution)
        try:
            self._pages_tried = True
            session.check(
                session.core.pdf_SaveDIBAsColorPDFPageW(
                    session.handle, block, _wide(codec), int(compression),
                    -1 if quality is None else quality), "add_page")
        finally:
            session.core.GlobalFree(block)

    def close(self) -> None:
        """Finishes the document. Harmless on a writer that is closed."""
        if self._session is None:
            return
        session = self._session
        try:
            if self._path is None:
                self._document = self._finish_in_memory(session)
            elif self._update and not self._pages_tried:
                pass  # finishing an update without a page would write over the file's start
            else:
                session.check(session.core.pdf_FinishPDF(session.handle), self._path)
        except BaseException:
            self._give_up()
            raise
        self._session = None
        session.release()
        if self._written_to != self._path:
            self._move_to_target()

    def getvalue(self) -> bytes:
        """The finished document in memory."""
        if self._document is None:
            raise ValueError("no document in memory, or not finished yet")
        return self._document

    def __enter__(self) -> PdfWriter:
        return self

    def __exit__(self, kind: Any, value: Any, trace: Any) -> None:
        if kind is None or self._update and self._pages_tried:
            self.close()
        else:
            self._give_up()

    def __del__(self) -> None:
        if getattr(self, "_session", None) is not None:
            self._give_up()

    def _open_session(self) -> _Session:
        if self._session is None:
            raise ValueError("the document is closed")
        return self._session

    def _new_name(self) -> str:
        """A name beside the target that no file has."""
        folder, name = os.path.split(self._path)
        for number in range(sys.maxsize):
            path = os.path.join(folder, f".{name}.{os.getpid()}-{number}.part")
            if not os.path.lexists(path):
                return path
        raise FileExistsError(self._path)

    def _start(self, session: _Session, strings: dict[str, str]) -> None:
        for name, text in strings.items():
            setter = getattr(session.core, f"pdf_Set{name.capitalize()}W")
            session.check(setter(session.handle, _wide(text)), name)
        if self._path is None:
            session.check(session.core.pdf_CreatePDFInMemory(session.handle, None, 1 << 16),
                          "PdfWriter")
        else:
            session.check(session.core.pdf_CreatePDFW(session.handle, _wide(self._written_to)),
                          self._path)

    def _move_to_target(self) -> None:
        if self._exclusive and os.path.lexists(self._path):
            os.unlink(self._written_to)
            raise FileExistsError(f"{self._path} exists")
        try:
            os.replace(self._written_to, self._path)
        except OSError:
            os.unlink(self._written_to)
            raise

    def _finish_in_memory(self, session: _Session) -> bytes:
        data, count = ctypes.c_void_p(), ctypes.c_uint32()
        session.check(
            session.core.pdf_FinishPDFInMemory(session.handle, ctypes.byref(data),
                                                  ctypes.byref(count)), "close")
        try:
            return ctypes.string_at(data.value, count.value)
        finally:
            session.core.pdf_FreePDFInMemory(data)

    def _give_up(self) -> None:
        """Closes without finishing, and removes a file that was being made."""
        session, self._session = self._session, None
        if session is None:
            return
        session.release()
        if self._written_to != self._path:
            pathlib.Path(self._written_to).unlink(missing_ok=True)


class PdfReader(Sequence):
    """The page images of a document, read when they are asked for; a context manager.

    `source` is a file's path, or a document as bytes (or another buffer). len() is the number of
    pages, reader[page] the Image of one, from 0. title, author, subject and keywords are the
    document's strings.

    A document with a run of 100 or more digits where a number belongs ends the process, as the
    library cannot report it: read documents of strangers in a process of their own.
    """

    def __init__(self, source: Path | bytes | bytearray | memoryview) -> None:
        session = _Session()
        self._session: _Session | None = session
        self._name = "PdfReader"
        try:
            if isinstance(source, (str, os.PathLike)):
                self._name = os.fspath(source)
                code = session.core.pdf_OpenPDFFileW(session.handle, _wide(self._name))
            else:
                self._data = bytes(source)  # read in place, so it lives as long as the reader
                code = session.core.pdf_OpenPDFInMemory(session.handle, self._data,
                                                           len(self._data))
            session.check(code, self._name)
        except BaseException:
            self.close()
            raise
        self._count = session.core.pdf_GetNumberOfPages(session.handle)

    def __len__(self) -> int:
        return self._count

    def __getitem__(self, page: int) -> Image:  # type: ignore[override]
        if not -self._count <= page < self._count:
            raise IndexError(f"page {page} of {self._count}")
        return self._load(page % self._count)

    def __iter__(self) -> Iterator[Image]:
        return (self._load(page) for page in range(self._count))

    @property
    def title(self) -> str:
        return self._string("Title")

    @property
    def author(self) -> str:
        return self._string("Author")

    @property
    def subject(self) -> str:
        return self._string("Subject")

    @property
    def keywords(self) -> str:
        return self._string("Keywords")

    def close(self) -> None:
        """Closes the document. Harmless on a reader that is closed."""
        session, self._session = self._session, None
        if session is not None:
            session.release()

    def __enter__(self) -> PdfReader:
        return self

    def __exit__(self, kind: Any, value: Any, trace: Any) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_session", None) is not None:
            self.close()

    def _open_session(self) -> _Session:
        if self._session is None:
            raise ValueError("the document is closed")
        return self._session

    def _load(self, page: int) -> Image:
        session = self._open_session()
        block = session.core.pdf_LoadImageFromPDF(session.handle, page)
        if block in _INVALID:
            code = session.core.pdf_PDF_GetLastError(session.handle)
            text = session.text() if code else "the page has no image that can be read"
            raise PdfError(code, text, f"{self._name}, page {page}")
        try:
            return _image_of(_bytes_of(session.core, block))
        finally:
            session.core.GlobalFree(block)

    def _string(self, name: str) -> str:
        session = self._open_session()
        getter = getattr(session.core, f"pdf_Get{name}W")
        units = ctypes.c_uint32()
        session.check(getter(session.handle, None, ctypes.byref(units)), name)
        buffer = ctypes.create_string_buffer(units.value * 2)
        session.check(getter(session.handle, buffer, ctypes.byref(units)), name)
        return buffer.raw[:-2].decode("utf-16-le", "replace")


def page_count(source: Path | bytes | bytearray | memoryview) -> int:
    """The number of pages of a document, a path or bytes."""
    with PdfReader(source) as pdf:
        return len(pdf)


class _Picture:
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
        self.colours = _colour_table(self.bits, palette)

    def _take_flat(self, view: memoryview, size: tuple[int, int] | None,
                   bits: int | None) -> None:
        if size is None or bits not in (1, 8, 24):
            raise ValueError("flat bytes need size=(width, height) and bits=1, 8 or 24")
        self.width, self.height = size
        self.bits = bits
        self.rows = view.tobytes()
        wanted = _row_bytes(self.width, bits) * self.height
        if len(self.rows) != wanted:
            raise ValueError(f"{self.width}x{self.height} pixels of {bits} bits take {wanted} "
                             f"bytes, not {len(self.rows)}")

    def _take_shaped(self, view: memoryview) -> None:
        shape = view.shape
        if len(shape) == 3 and shape[2] == 1:
            shape = shape[:2]
        self.height, self.width = shape[:2]
        if len(shape) == 2 and view.format == "?":
            self.bits = 1
            self.rows = _pack(view.tobytes(), self.width, self.height)
        elif view.format == "B" and len(shape) == 2:
            self.bits, self.rows = 8, view.tobytes()
        elif view.format == "B" and len(shape) == 3 and shape[2] == 3:
            self.bits, self.rows = 24, view.tobytes()
        else:
            raise TypeError(f"pixels of shape {view.shape} and format {view.format!r}: bilevel, "
                            "8 bits or red, green, blue of 8 bits each are wanted")


def _row_bytes(width: int, bits: int) -> int:
    return (width * bits + 7) // 8


def _stride(width: int, bits: int) -> int:
    return (width * bits + 31) // 32 * 4


def _pack(values: bytes, width: int, height: int) -> bytes:
    """Bits from one byte a pixel (0 or not), rows of whole bytes."""
    digits = values.translate(b"0" + b"1" * 255).decode("ascii")
    row_bytes = _row_bytes(width, 1)
    rows = (digits[y * width:(y + 1) * width].ljust(row_bytes * 8, "0") for y in range(height))
    return b"".join(int(row, 2).to_bytes(row_bytes, "big") for row in rows) if width else b""


def _unpack(rows: bytes, width: int, height: int) -> bytes:
    """One byte a pixel, 0 or 1, from rows of whole bytes."""
    row_bytes = _row_bytes(width, 1)
    digits = (bin(1 << row_bytes * 8 |
                  int.from_bytes(rows[y * row_bytes:(y + 1) * row_bytes], "big"))
              for y in range(height))
    table = bytes.maketrans(b"01", b"\0\1")
    return b"".join(row[3:3 + width].encode("ascii").translate(table) for row in digits)


def _exchange_red_and_blue(pixels: bytes) -> bytes:
    exchanged = bytearray(pixels)
    exchanged[0::3] = pixels[2::3]
    exchanged[2::3] = pixels[0::3]
    return bytes(exchanged)


def _colour_table(bits: int, palette: Any) -> bytes:
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


def _pixels_per_metre(dpi: Resolution | None) -> tuple[int, int]:
    if dpi is None:
        return 0, 0
    x, y = dpi if isinstance(dpi, (tuple, list)) else (dpi, dpi)
    result = round(x / _METRES_PER_INCH), round(y / _METRES_PER_INCH)
    if not all(20 <= value < 1 << 31 for value in result):  # 20 a metre is half a dot per inch
        raise ValueError(f"a resolution of {x} by {y} dots per inch")
    return result


def _check_page_size(picture: _Picture, resolution: tuple[int, int]) -> None:
    """The library writes no page for a picture that comes to less than half a point."""
    for pixels, per_metre in zip((picture.width, picture.height), resolution):
        dpi = int(per_metre * _METRES_PER_INCH + 0.5) or 96
        if int(pixels * 72 / dpi + 0.5) == 0:
            raise ValueError(f"{pixels} pixels at {dpi} dots per inch are less than half a point")


def _block_of(library: ctypes.CDLL, picture: _Picture, resolution: tuple[int, int]) -> int:
    """A new global block with the packed bitmap: header, colour table, rows from the lowest up."""
    width, height = picture.width, picture.height
    rows = _exchange_red_and_blue(picture.rows) if picture.bits == 24 else picture.rows
    row_bytes, stride = _row_bytes(width, picture.bits), _stride(width, picture.bits)
    padding = bytes(stride - row_bytes)
    header = _HEADER.pack(40, width, height, 1, picture.bits, 0, stride * height, *resolution, 0, 0)
    lines = (rows[y * row_bytes:(y + 1) * row_bytes] + padding for y in reversed(range(height)))
    dib = b"".join((header, picture.colours, *lines))
    block = library.GlobalAlloc(_GHND, len(dib))
    address = library.GlobalLock(block) if block else None
    if not address:
        raise MemoryError(f"a bitmap of {len(dib)} bytes")
    ctypes.memmove(address, dib, len(dib))
    library.GlobalUnlock(block)
    return block


def _bytes_of(library: ctypes.CDLL, block: int) -> bytes:
    address = library.GlobalLock(block)
    if not address:
        raise MemoryError("a bitmap cannot be locked")
    try:
        return ctypes.string_at(address, library.GlobalSize(block))
    finally:
        library.GlobalUnlock(block)


def _image_of(dib: bytes) -> Image:
    """The image of a packed bitmap as the library rebuilds it."""
    (size, width, height, _, bits, _, _, x_per_metre, y_per_metre, used, _) = \
        _HEADER.unpack_from(dib)
    colours = used or (1 << bits if bits <= 8 else 0)
    at, row_bytes, stride = size + 4 * colours, _row_bytes(width, bits), _stride(width, bits)
    rows = b"".join(dib[at + y * stride:at + y * stride + row_bytes]
                    for y in reversed(range(height)))
    table = dib[size:at]
    dpi = (x_per_metre * _METRES_PER_INCH, y_per_metre * _METRES_PER_INCH)
    if bits == 24:
        pixels = memoryview(_exchange_red_and_blue(rows)).cast("B", (height, width, 3))
        return Image(width, height, bits, dpi, pixels)
    if bits == 1:
        return Image(width, height, bits, dpi, _bilevel(rows, table, width, height))
    return _image_of_indices(width, height, dpi, rows, table)


def _bilevel(rows: bytes, table: bytes, width: int, height: int) -> memoryview:
    """True where the pixel has the brighter colour of the table."""
    values = _unpack(rows, width, height)
    if sum(table[:3]) > sum(table[4:7]):
        values = values.translate(b"\1\0" + bytes(254))
    return memoryview(values).cast("?", (height, width))


def _image_of_indices(width: int, height: int, dpi: tuple[float, float], rows: bytes,
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


def _check_strings(strings: dict[str, str]) -> None:
    """A longer string would end the process."""
    for name, text in strings.items():
        units = len(text.encode("utf-16-le")) // 2
        if units > _MAX_INFO_UNITS[name]:
            raise ValueError(f"{name} has {units} UTF-16 units; {_MAX_INFO_UNITS[name]} fit")


def _wide(text: str) -> bytes:
    """Zero-terminated UTF-16 for a WCHAR pointer."""
    if "\0" in text:
        raise ValueError("a text for the library cannot hold a NUL")
    return text.encode("utf-16-le") + b"\0\0"


@functools.lru_cache(maxsize=None)
def _library() -> ctypes.CDLL:
    """The library with the types of its functions."""
    library = _load_library()
    handle, block, text = ctypes.c_int64, ctypes.c_void_p, ctypes.c_char_p
    number, pointer = ctypes.c_uint32, ctypes.c_void_p
    types: dict[str, tuple[Any, ...]] = {  # the result, then the arguments
        "pdf_Init_PDF": (number, pointer),
        "pdf_Release_PDF": (number, handle),
        "pdf_PDF_GetLastError": (number, handle),
        "pdf_GetLastPDFErrorText": (number, handle, text),
        "pdf_CreatePDFW": (number, handle, text),
        "pdf_CreatePDFInMemory": (number, handle, pointer, number),
        "pdf_SaveDIBAsColorPDFPageW": (number, handle, block, text, number, ctypes.c_int),
        "pdf_FinishPDF": (number, handle),
        "pdf_FinishPDFInMemory": (number, handle, pointer, pointer),
        "pdf_FreePDFInMemory": (number, pointer),
        "pdf_OpenPDFFileW": (number, handle, text),
        "pdf_OpenPDFInMemory": (number, handle, text, number),
        "pdf_GetNumberOfPages": (number, handle),
        "pdf_LoadImageFromPDF": (block, handle, number),
        "GlobalAlloc": (block, ctypes.c_uint, ctypes.c_size_t),
        "GlobalLock": (pointer, block),
        "GlobalUnlock": (ctypes.c_int, block),
        "GlobalSize": (ctypes.c_size_t, block),
        "GlobalFree": (block, block),
    }
    for name in ("Title", "Author", "Subject", "Keywords"):
        types[f"pdf_Set{name}W"] = (number, handle, text)
        types[f"pdf_Get{name}W"] = (number, handle, text, pointer)
    system = ctypes.windll.kernel32 if sys.platform == "win32" else library  # type: ignore
    for name, (result, *arguments) in types.items():
        if name.startswith("Global"):
            setattr(library, name, getattr(system, name))
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


def _load_library() -> ctypes.CDLL:
    names = ["Sorrelin.dll"] if sys.platform == "win32" else ["libsorrelin.so.13",
                                                              "libsorrelin.so"]
    given = os.environ.get("SORRELIN_LIBRARY")
    beside = pathlib.Path(__file__).resolve().parent
    candidates = [given] if given else [
        *(str(beside / name) for name in names if (beside / name).exists()), *names]
    failures = []
    for candidate in candidates:
        try:
            return ctypes.CDLL(candidate)
        except OSError as failure:
            failures.append(str(failure))
    raise OSError("the Sorrelin library cannot be loaded; SORRELIN_LIBRARY may name its file\n  " +
                  "\n  ".join(failures))

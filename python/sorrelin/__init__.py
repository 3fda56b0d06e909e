"""Bitmaps to PDF documents and back: the Sorrelin library for Python.

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
searches. On Windows it is Sorrelin.dll, beside this file or in a folder of PATH. It is loaded on
first use. It writes a line to the process's standard output when it is loaded and when the process
ends, unless it was built with SORRELIN_LOAD_LINE off.

A writer or reader is for one thread at a time; several of them may work at the same time, as the
interpreter's lock is released during a call.
"""

from __future__ import annotations

import ctypes
import enum
import os
import pathlib
import sys
from collections.abc import Iterator, Sequence
from typing import Any, Protocol, Union, overload

from sorrelin._library import PdfError, Session, coded_library, wide
from sorrelin._pictures import (Image, Picture, Resolution, block_of, bytes_of, check_page_size,
                                image_of, of_pil, pixels_per_metre)

__version__ = "13.1.0"

__all__ = ["Compression", "Image", "PdfError", "PdfReader", "PdfWriter", "page_count"]

Path = Union[str, "os.PathLike[str]"]


class Writable(Protocol):
    """A binary file that is open for writing, or anything like it."""

    def write(self, data: bytes, /) -> Any: ...


class Readable(Protocol):
    """A binary file that is open for reading, or anything like it."""

    def read(self) -> bytes: ...


_INVALID = (None, 0, ctypes.c_void_p(-1).value)  # handles that are none
_MAX_INFO_UNITS = {"title": 252, "author": 252, "subject": 252, "keywords": 251}
_CODECS = {6: "Cadwick.dll", 7: "Rennick.dll"}


class Compression(enum.IntEnum):
    """How a page's image is coded."""

    NONE = 0
    FLATE = 4
    RUN_LENGTH = 5  # 8 bits a pixel only
    CCITT = 6  # Group 4; bilevel only
    JPEG = 7  # grey and colour, with loss


class PdfWriter:
    """Writes a document page by page; a context manager that finishes it at the end.

    `target` is a file's path, a binary file that is open for writing and takes the document when it is
    finished, or None for a document in memory. `mode` says what happens to an
    existing file:

        "w"  it is replaced when the new document is finished, and unchanged until then
        "x"  FileExistsError
        "a"  it is updated: the new pages are added after its own, in the same file

    title, author, subject and keywords have at most 252 UTF-16 units (keywords 251), are fixed when
    the document is started, and cannot be changed by an update.

    An exception in the `with` block discards a new document. An update cannot be taken back: the
    pages that were added stay, and the file is finished with them.
    """

    def __init__(self, target: Path | Writable | None, mode: str = "w", *, title: str = "", author: str = "",
                 subject: str = "", keywords: str = "") -> None:
        if mode not in ("w", "x", "a"):
            raise ValueError(f"mode {mode!r} is none of 'w', 'x', 'a'")
        path = target if isinstance(target, (str, os.PathLike)) else None
        self._stream = None if path is not None or target is None else _writable(target)
        if path is None and mode == "a":
            raise ValueError("a document in memory cannot be updated: write it to a file first")
        strings = {"title": title, "author": author, "subject": subject, "keywords": keywords}
        _check_strings(strings)
        # "" for a document in memory
        self._path = "" if path is None else os.path.abspath(os.fspath(path))
        exists = self._path != "" and os.path.lexists(self._path)
        self._update = exists and mode == "a"
        if exists and mode == "x":
            raise FileExistsError(f"{self._path} exists")
        if self._update and any(strings.values()):
            raise ValueError("an update keeps the strings of the document")
        self._exclusive = mode == "x"
        self._written_to = self._path if self._update or not self._path else self._new_name()
        self._document: bytes | None = None
        self._pages_tried = False
        self._session: Session | None = Session()
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

        pixels       see above; a PIL.Image, whose modes 1, L, P and RGB are taken as they are, others and
                     those with a transparent colour as L or RGB with a warning; or flat bytes, with
                     `size` (width, height) and `bits`: 1 (rows of whole bytes, the leftmost pixel in the
                     highest bit, 1 is white), 8 or 24
        dpi          one number, or one for x and one for y; without, 96
        palette      for 8 bits: up to 256 times red, green, blue; without, a ramp of greys
        compression  without, Group 4 for bilevel pictures and Flate for others
        quality      0 to 9 for Flate, 1 to 100 for JPEG; without, the library's default
        codec        the library that codes Group 4 or JPEG, a name or a path; without, the
                     library's own
        """
        session = self._open_session()
        if hasattr(pixels, "getbands"):
            pixels, size, bits, palette, dpi = of_pil(pixels, palette, dpi)
        picture = Picture(pixels, size, bits, palette)
        resolution = pixels_per_metre(dpi)
        check_page_size(picture, resolution)
        if compression is None:
            compression = Compression.CCITT if picture.bits == 1 else Compression.FLATE
        codec = _CODECS.get(int(compression), "") if codec is None else codec
        block = block_of(session.core, picture, resolution)
        try:
            self._pages_tried = True
            session.check(
                session.core.pdf_SaveDIBAsColorPDFPageW(
                    session.handle, block, wide(codec), int(compression),
                    -1 if quality is None else quality), "add_page")
        finally:
            session.core.GlobalFree(block)

    def add_jpeg(self, data: bytes, *, dpi: Resolution | None = None) -> None:
        """Adds a JPEG file (8 bits a sample, grey or YCbCr) as a page, byte for byte.

        The document is a new one. Without `dpi` the page has the file's own resolution, or else 96 dots
        per inch.
        """
        x, y = _dots_per_inch(dpi)
        self._add_coded("pdf_AddJPEGPage", data, x, y)

    def add_group4(self, data: bytes, width: int, height: int, *, dpi: Resolution | None = None,
                   invert: bool = False) -> None:
        """Adds Group 4 data (the highest bit first) as a page, byte for byte.

        The document is a new one, and the data are not decoded. A black run is black, or
        white with `invert`. Without `dpi`, 96 dots per inch.
        """
        if not (0 < width < 1 << 31 and 0 < height < 1 << 31):
            raise ValueError(f"a picture of {width} x {height} pixels")
        x, y = _dots_per_inch(dpi)
        self._add_coded("pdf_AddGroup4Page", data, width, height, x, y, int(invert))

    def _add_coded(self, name: str, data: bytes, *arguments: int) -> None:
        session = self._open_session()
        if self._update:
            raise ValueError("coded pictures go into new documents only")
        self._pages_tried = True
        coded = bytes(data)
        session.check(getattr(coded_library(), name)(session.handle, coded, len(coded), *arguments),
                      name)

    def close(self) -> None:
        """Finishes the document. Harmless on a writer that is closed."""
        if self._session is None:
            return
        session = self._session
        try:
            if not self._path:
                self._document = self._finish_in_memory(session)
                if self._stream is not None:
                    self._stream.write(self._document)
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

    def _open_session(self) -> Session:
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

    def _start(self, session: Session, strings: dict[str, str]) -> None:
        for name, text in strings.items():
            setter = getattr(session.core, f"pdf_Set{name.capitalize()}W")
            session.check(setter(session.handle, wide(text)), name)
        if not self._path:
            session.check(session.core.pdf_CreatePDFInMemory(session.handle, None, 1 << 16),
                          "PdfWriter")
        else:
            session.check(session.core.pdf_CreatePDFW(session.handle, wide(self._written_to)),
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

    def _finish_in_memory(self, session: Session) -> bytes:
        data, count = ctypes.c_void_p(), ctypes.c_uint32()
        session.check(
            session.core.pdf_FinishPDFInMemory(session.handle, ctypes.byref(data),
                                                  ctypes.byref(count)), "close")
        try:
            return ctypes.string_at(data, count.value)
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


class PdfReader(Sequence[Image]):
    """The page images of a document, read when they are asked for; a context manager.

    `source` is a file's path, a binary file that is open for reading, or a document as bytes (or
    another buffer). len() is the number of
    pages, reader[page] the Image of one, from 0. title, author, subject and keywords are the
    document's strings.

    A document with a run of 100 or more digits where a number belongs ends the process, as the
    library cannot report it: read documents of strangers in a process of their own.
    """

    def __init__(self, source: Path | Readable | bytes | bytearray | memoryview) -> None:
        session = Session()
        self._session: Session | None = session
        self._name = "PdfReader"
        try:
            if isinstance(source, (str, os.PathLike)):
                self._name = os.fspath(source)
                code = session.core.pdf_OpenPDFFileW(session.handle, wide(self._name))
            else:
                data = source.read() if hasattr(source, "read") else source
                self._data = bytes(data)  # read in place, so it lives as long as the reader
                code = session.core.pdf_OpenPDFInMemory(session.handle, self._data,
                                                           len(self._data))
            session.check(code, self._name)
        except BaseException:
            self.close()
            raise
        self._count: int = session.core.pdf_GetNumberOfPages(session.handle)

    def __len__(self) -> int:
        return self._count

    @overload
    def __getitem__(self, page: int) -> Image: ...

    @overload
    def __getitem__(self, page: slice) -> list[Image]: ...

    def __getitem__(self, page: int | slice) -> Image | list[Image]:
        if isinstance(page, slice):
            return [self._load(number) for number in range(*page.indices(self._count))]
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

    def _open_session(self) -> Session:
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
            return image_of(bytes_of(session.core, block))
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


def page_count(source: Path | Readable | bytes | bytearray | memoryview) -> int:
    """The number of pages of a document, a path or bytes."""
    with PdfReader(source) as pdf:
        return len(pdf)


def _writable(target: Any) -> Writable:
    if not hasattr(target, "write"):
        raise TypeError("a target is a path, a binary file or None")
    stream: Writable = target
    return stream


def _dots_per_inch(dpi: Resolution | None) -> tuple[int, int]:
    """Whole numbers; 0 leaves it to the picture."""
    if dpi is None:
        return 0, 0
    x, y = dpi if isinstance(dpi, (tuple, list)) else (dpi, dpi)
    if not (1 <= x < 1 << 31 and 1 <= y < 1 << 31):
        raise ValueError(f"a resolution of {x} by {y} dots per inch")
    return round(x), round(y)


def _check_strings(strings: dict[str, str]) -> None:
    """A longer string would end the process."""
    for name, text in strings.items():
        units = len(text.encode("utf-16-le")) // 2
        if units > _MAX_INFO_UNITS[name]:
            raise ValueError(f"{name} has {units} UTF-16 units; {_MAX_INFO_UNITS[name]} fit")



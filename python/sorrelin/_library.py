"""The libraries, the types of their functions, and their failures as exceptions."""

from __future__ import annotations

import ctypes
import functools
import os
import pathlib
import sys
from typing import Any

_ERROR_TEXT_BYTES = 4096


class PdfError(Exception):
    """A call of the library failed: `code` is its number, `text` its message."""

    def __init__(self, code: int, text: str, what: str) -> None:
        super().__init__(f"{what}: {text} (code {code})")
        self.code = code
        self.text = text


class Session:
    """A session of the library, and its failures as exceptions."""

    def __init__(self) -> None:
        self.core = core_library()
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


def wide(text: str) -> bytes:
    """Zero-terminated UTF-16 for a WCHAR pointer."""
    if "\0" in text:
        raise ValueError("a text for the library cannot hold a NUL")
    return text.encode("utf-16-le") + b"\0\0"


@functools.lru_cache(maxsize=None)
def core_library() -> ctypes.CDLL:
    """The library with the types of its functions."""
    library = load_library()
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


def load_library() -> ctypes.CDLL:
    names = ["libsorrelin.so.13", "libsorrelin.so"]
    folders = [pathlib.Path(__file__).resolve().parent]
    if sys.platform == "win32":
        names = ["Sorrelin.dll"]
        # Python leaves these out of the loader's search.
        folders += [pathlib.Path(folder).resolve() for folder in os.get_exec_path()]
    given = os.environ.get("SORRELIN_LIBRARY")
    places = [folder / name for folder in folders for name in names]
    candidates = [given] if given else [*(str(place) for place in places if place.exists()), *names]
    failures = []
    for candidate in candidates:
        try:
            return ctypes.CDLL(candidate)
        except OSError as failure:
            failures.append(str(failure))
    raise OSError("the Sorrelin library cannot be loaded; SORRELIN_LIBRARY may name its file\n  " +
                  "\n  ".join(failures))


@functools.lru_cache(maxsize=None)
def coded_library() -> ctypes.CDLL:
    """The library of coded pages, from where the core library is."""
    folder = os.path.dirname(core_library()._name)
    library = ctypes.CDLL(os.path.join(folder, "libsorrelin-coded.so.13"))
    handle, number, data = ctypes.c_int64, ctypes.c_uint32, ctypes.c_char_p
    jpeg, group4 = library.pdf_AddJPEGPage, library.pdf_AddGroup4Page
    jpeg.restype, jpeg.argtypes = number, [handle, data, number, number, number]
    group4.restype = number
    group4.argtypes = [handle, data, number, ctypes.c_int32, ctypes.c_int32, number, number,
                       ctypes.c_int]
    return library

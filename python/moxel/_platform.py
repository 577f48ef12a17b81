"""The component's library, its entry points, and interface pointers that release themselves."""

import ctypes
import os
import sys
import threading
from ctypes import byref, c_char_p, c_int32, c_size_t, c_uint16, c_uint32, c_void_p
from pathlib import Path
from typing import Any, Callable, Optional

from . import _errors

# ---- the library


def _candidates() -> list[str]:
    chosen = os.environ.get("MOXEL_LIBRARY")
    if chosen:
        return [chosen]
    built = Path(__file__).resolve().parents[2] / "build" / "release" / "lib" / "libmoxel.so"
    return ([str(built)] if built.exists() else []) + ["libmoxel.so"]


def _load() -> ctypes.CDLL:
    failures = []
    for path in _candidates():
        try:
            library = ctypes.CDLL(path)
            library.DllGetClassObject, library.VariantClear  # the second comes from the library below it
            return library
        except (OSError, AttributeError) as failure:
            failures.append(f"\n  {path}: {failure}")
    raise ImportError(
        "The component's library cannot be loaded. Tried:" + "".join(failures) + "\nThe environment variable "
        "MOXEL_LIBRARY names it where it is not in the places that the system's loader searches."
    )


_library = _load()


def _entry(name: str, *arguments: Any, result: Any = c_int32) -> Any:
    function = getattr(_library, name)
    function.argtypes, function.restype = arguments, result
    return function


DllGetClassObject = _entry("DllGetClassObject", c_char_p, c_char_p, c_void_p)
DllCanUnloadNow = _entry("DllCanUnloadNow")
SysAllocStringLen = _entry("SysAllocStringLen", c_char_p, c_uint32, result=c_void_p)
SysStringLen = _entry("SysStringLen", c_void_p, result=c_uint32)
SysFreeString = _entry("SysFreeString", c_void_p, result=None)
VariantClear = _entry("VariantClear", c_void_p)
GetErrorInfo = _entry("GetErrorInfo", c_uint32, c_void_p)
SetErrorInfo = _entry("SetErrorInfo", c_uint32, c_void_p)

# ---- the methods of interfaces


def method(slot: int, *arguments: Any, result: Any = c_int32) -> Callable[..., Any]:
    """A function that calls the method in one slot of whatever interface it is given."""
    prototype = ctypes.CFUNCTYPE(result, c_void_p, *arguments)
    offset = slot * ctypes.sizeof(c_void_p)
    known: dict[int, Any] = {}  # by the address of the code

    def call(this: int, *values: Any) -> Any:
        address = c_size_t.from_address(c_size_t.from_address(this).value + offset).value
        function = known.get(address)
        if function is None:
            function = known[address] = prototype(address)
        return function(this, *values)

    return call


QueryInterface = method(0, c_char_p, c_void_p)
AddRef = method(1, result=c_uint32)
Release = method(2, result=c_uint32)
CreateInstance = method(3, c_void_p, c_char_p, c_void_p)
GetTypeInfo = method(4, c_uint32, c_uint32, c_void_p)
Invoke = method(6, c_int32, c_char_p, c_uint32, c_uint16, c_void_p, c_void_p, c_void_p, c_void_p)
Next = method(3, c_uint32, c_void_p, c_void_p)
GetSource = method(4, c_void_p)
GetDescription = method(5, c_void_p)


class _ThisThread(threading.local):
    def __init__(self) -> None:
        self.mark = object()  # unlike its number, never given to another thread


_this_thread = _ThisThread()


class Pointer:
    """A pointer to an interface with a reference of its own. It is used on the thread that made it, and
    released on whichever lets it go."""

    __slots__ = ("_address", "_thread", "__weakref__")
    _address: int
    _thread: object

    @classmethod
    def _own(cls, address: int) -> Any:
        """Takes over a reference."""
        pointer = object.__new__(cls)
        object.__setattr__(pointer, "_address", address)
        object.__setattr__(pointer, "_thread", _this_thread.mark)
        return pointer

    def __del__(self, ending: Any = sys.is_finalizing, release: Any = Release) -> None:
        # At the interpreter's end what a release needs may be gone, and so is soon the process.
        address = getattr(self, "_address", 0)
        if address and not ending():
            release(address)

    def __reduce_ex__(self, protocol: Any) -> Any:
        raise TypeError(f"{type(self).__name__} objects belong to this process: no copy, no pickle")


class Dispatch(Pointer):
    """An object that is called by name."""

    __slots__ = ()


def address_of(pointer: Pointer) -> int:
    if pointer._thread is not _this_thread.mark:
        raise RuntimeError(f"this {type(pointer).__name__} belongs to another thread, which made it")
    return pointer._address


def detach(pointer: Pointer) -> int:
    """Hands the reference over to the caller."""
    address = address_of(pointer)
    object.__setattr__(pointer, "_address", 0)
    return address


def query(pointer: Pointer, interface: bytes) -> Optional[int]:
    """Another interface of the same object, with a reference for the caller."""
    found = c_void_p()
    QueryInterface(pointer._address, interface, byref(found))
    return found.value


# ---- calls that fail by their result


def check(result: int) -> None:
    if result < 0:
        raise error_of(result)


def error_of(result: int, detail: str = "") -> _errors.Error:
    """The error of a failed call, as the thread's error info describes it."""
    info = c_void_p()
    if GetErrorInfo(0, byref(info)) != 0 or not info.value:
        return _errors.from_result(result, detail)
    held = Pointer._own(info.value)
    source, description = (text_from(get, held._address) for get in (GetSource, GetDescription))
    return _errors.Error(_errors.number_of(result), source, description)


def receive(function: Callable[..., int], *arguments: Any) -> Any:
    """What a call hands out by its last parameter."""
    result = c_void_p()
    # What an earlier call left must not describe a failure of this one.
    SetErrorInfo(0, None)
    check(function(*arguments, byref(result)))
    return result.value


# ---- texts


def new_text(text: str) -> int:
    units = text.encode("utf-16-le", "surrogatepass")
    address = SysAllocStringLen(units, len(units) // 2)
    if not address:
        raise MemoryError
    return address


def text_at(address: Optional[int]) -> str:
    if not address:
        return ""
    return ctypes.string_at(address, 2 * SysStringLen(address)).decode("utf-16-le", "surrogatepass")


def take_text(address: Optional[int]) -> str:
    try:
        return text_at(address)
    finally:
        SysFreeString(address)


def text_from(get: Callable[..., int], this: int) -> str:
    text = c_void_p()
    get(this, byref(text))
    return take_text(text.value)

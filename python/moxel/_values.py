"""Python values in variants and back."""

import abc
import math
from datetime import date, datetime, time, timedelta
from typing import Any

from . import _platform
from ._layouts import DISP_E_PARAMNOTFOUND, VARIANT, VT
from ._types import Parameter

# Where a variant keeps the numbers of each width.
_NUMBERS = {
    VT.I1: "cVal",
    VT.I2: "iVal",
    VT.I4: "lVal",
    VT.I8: "llVal",
    VT.INT: "lVal",
    VT.UI1: "bVal",
    VT.UI2: "uiVal",
    VT.UI4: "ulVal",
    VT.UI8: "ullVal",
    VT.UINT: "ulVal",
    VT.R4: "fltVal",
    VT.R8: "dblVal",
}
_DAY_ZERO = datetime(1899, 12, 30)
_MICROSECONDS_A_DAY = 86_400_000_000


class _Null:
    """The value that is none, unlike nothing at all."""

    def __repr__(self) -> str:
        return "moxel.NULL"

    def __bool__(self) -> bool:
        return False


NULL = _Null()


class Value(abc.ABC):
    """What a variant takes: None, `moxel.NULL`, a bool, int, float, str, date, datetime or an object of the
    component."""


for _type in (type(None), _Null, bool, int, float, str, date, _platform.Dispatch):
    Value.register(_type)


def store(variant: VARIANT, value: Any, parameter: Parameter) -> None:
    """Puts an argument into an empty variant, which then owns what it holds."""
    if value is None:
        _store_nothing(variant, parameter)
    elif isinstance(value, _platform.Dispatch):
        _store_object(variant, _platform.address_of(value))
    elif parameter.type.is_object:
        raise TypeError(f"{parameter.name}: an object of the component or None is needed, not {_kind(value)}")
    elif isinstance(value, bool):
        variant.vt, variant.boolVal = VT.BOOL, -value
    elif isinstance(value, int):
        _store_integer(variant, value)
    elif isinstance(value, float):
        variant.vt, variant.dblVal = VT.R8, value
    elif isinstance(value, str):
        variant.pointer = _platform.new_text(value)
        variant.vt = VT.BSTR
    elif isinstance(value, date):
        variant.vt, variant.dblVal = VT.DATE, _days(value)
    elif value is NULL:
        variant.vt = VT.NULL
    else:
        raise TypeError(f"{parameter.name}: the component has no values of type {_kind(value)}")


def take(variant: VARIANT) -> Any:
    """The value of a variant; objects move out of it, as pointers."""
    kind = variant.vt
    if kind in (VT.EMPTY, VT.NULL):
        return None
    if kind == VT.BSTR:
        return _platform.text_at(variant.pointer)
    if kind in _NUMBERS:
        return getattr(variant, _NUMBERS[kind])
    if kind in (VT.DISPATCH, VT.UNKNOWN):
        variant.vt = VT.EMPTY
        pointer = _platform.Dispatch if kind == VT.DISPATCH else _platform.Pointer
        return pointer._own(variant.pointer) if variant.pointer else None
    if kind == VT.BOOL:
        return variant.boolVal != 0
    if kind == VT.DATE:
        return _moment(variant.dblVal)
    if kind == VT.ERROR and variant.lVal == DISP_E_PARAMNOTFOUND:
        return None
    raise TypeError(f"a variant of type {kind} has no form in Python")


# Not the value itself, which may be a password.
def _kind(value: Any) -> str:
    return type(value).__name__


def _store_nothing(variant: VARIANT, parameter: Parameter) -> None:
    if parameter.type.is_object:
        variant.vt, variant.pointer = VT.DISPATCH, None
    elif parameter.optional:
        variant.vt, variant.lVal = VT.ERROR, DISP_E_PARAMNOTFOUND
    elif not parameter.type.is_variant:
        raise TypeError(f"{parameter.name}: a value is needed, not None")


def _store_object(variant: VARIANT, address: int) -> None:
    _platform.AddRef(address)
    variant.vt, variant.pointer = VT.DISPATCH, address


def _store_integer(variant: VARIANT, value: int) -> None:
    bits = value.bit_length() if value >= 0 else (value + 1).bit_length()
    if bits < 32:
        variant.vt, variant.lVal = VT.I4, value
    elif bits < 64:
        variant.vt, variant.llVal = VT.I8, value
    else:
        variant.vt, variant.dblVal = VT.R8, float(value)


# A date counts days; the time of the day counts away from zero, before day zero too.
def _days(value: date) -> float:
    moment = value if isinstance(value, datetime) else datetime.combine(value, time())
    if moment.tzinfo is not None:
        raise TypeError("the component's dates have no time zone")
    since = moment - _DAY_ZERO
    part = (since.seconds * 1_000_000 + since.microseconds) / _MICROSECONDS_A_DAY
    return since.days + part if since.days >= 0 else since.days - part


def _moment(days: float) -> datetime:
    whole = int(days)
    # No digits that a number this far from day zero cannot hold: whole seconds stay whole.
    step = 10 ** max(0, math.ceil(math.log10(math.ulp(days) * _MICROSECONDS_A_DAY)))
    microseconds = step * round(abs(days - whole) * _MICROSECONDS_A_DAY / step)
    return _DAY_ZERO + timedelta(days=whole, microseconds=microseconds)

"""Objects of the component: calls, members by name, collections."""

import ctypes
from ctypes import addressof, byref, c_int32, c_uint32, c_void_p
from types import GenericAlias
from typing import Any, Optional, Sequence

from . import _errors, _platform, _types, _values
from ._layouts import (
    DISP_E_EXCEPTION, DISP_E_OVERFLOW, DISP_E_TYPEMISMATCH, DISPID_NEWENUM, DISPID_PROPERTYPUT, DISPID_VALUE,
    DISPPARAMS, EXCEPINFO, GUID_NULL, IID_IClassFactory, IID_IDispatch, IID_IEnumVARIANT, IID_IUnknown,
    VARIANT, Kind,
)
from ._types import Interface, Member

_NOT_FOUND = (5, 9)  # an unknown key, a position out of range
_NAME_THE_ARGUMENT = (DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW)
_THE_VALUE_PUT = c_int32(DISPID_PROPERTYPUT)

# ---- calls


def call(target: "Object", member: Member, values: Sequence[Any]) -> Any:
    """Calls a member with one value a parameter."""
    count = len(values)
    arguments = (VARIANT * count)()
    result, exception, bad_argument = VARIANT(), EXCEPINFO(), c_uint32()
    given = DISPPARAMS(addressof(arguments), None, count, 0)
    if member.kind in (Kind.PUT, Kind.PUT_REFERENCE):
        given.rgdispidNamedArgs, given.cNamedArgs = addressof(_THE_VALUE_PUT), 1
    try:
        for i, value in enumerate(values):  # the last argument lies first
            _values.store(arguments[count - 1 - i], value, member.parameters[i])
        _platform.SetErrorInfo(0, None)
        given_and_answered = (byref(each) for each in (given, result, exception, bad_argument))
        status = _platform.Invoke(
            _platform.address_of(target), member.id, GUID_NULL, 0, member.kind, *given_and_answered
        )
        if status < 0:
            raise _failure(status, exception, member, count - 1 - bad_argument.value)
        return _wrap(_values.take(result))
    finally:
        for variant in (*arguments, result):
            _platform.VariantClear(byref(variant))


def _failure(status: int, exception: EXCEPINFO, member: Member, bad_argument: int) -> _errors.Error:
    if exception.pfnDeferredFillIn:
        ctypes.CFUNCTYPE(c_int32, c_void_p)(exception.pfnDeferredFillIn)(addressof(exception))
    source = _platform.take_text(exception.bstrSource)
    description = _platform.take_text(exception.bstrDescription)
    _platform.take_text(exception.bstrHelpFile)
    if status == DISP_E_EXCEPTION and (exception.scode or exception.wCode):
        number = _errors.number_of(exception.scode or exception.wCode)
        return _errors.Error(number, source, description)
    detail = f": {member.name}"
    if status in _NAME_THE_ARGUMENT and bad_argument < len(member.parameters):
        detail += f", argument {member.parameters[bad_argument].name}"
    return _platform.error_of(status, detail)


def create(class_id: bytes) -> int:
    """A new object, with a reference for the caller. The component need not be registered."""
    found = _platform.receive(_platform.DllGetClassObject, class_id, IID_IClassFactory)
    factory = _platform.Pointer._own(found)
    return _platform.receive(_platform.CreateInstance, factory._address, None, IID_IDispatch)


# The classes by the identifiers of their interfaces.
classes: dict[Optional[bytes], type] = {}


def _wrap(value: Any) -> Any:
    """A value as callers see it: pointers become objects of their class."""
    if isinstance(value, _platform.Dispatch):
        of_class = classes.get(_types.interface_of(value._address), Object)
        return of_class._own(_platform.detach(value))
    if isinstance(value, _platform.Pointer):
        walk = _platform.query(value, IID_IEnumVARIANT)
        if not walk:
            raise TypeError("the component answered an object that has no form in Python")
        return Walk._own(walk)
    return value


# ---- objects


class Object(_platform.Dispatch):
    """An object of the component. Members are called by name, in any letter case. Objects are equal when they
    are one object to the component."""

    __slots__ = ()
    _interface = Interface(b"", "Object", "", [])
    _members: dict[str, Any] = {}  # by name in lower case; the hidden ones stand only here

    def __new__(cls):
        if cls._interface.class_id is None:
            raise TypeError(f"{cls.__name__} objects come from the component; clients do not create them")
        return cls._own(create(cls._interface.class_id))

    def __getattr__(self, name: str) -> Any:
        member = type(self)._members.get(name.lower())
        if member is None:
            raise AttributeError(f"{type(self).__name__} has no member {name!r}")
        return member.__get__(self, type(self))

    def __setattr__(self, name: str, value: Any) -> None:
        member = type(self)._members.get(name.lower())
        if not isinstance(member, property) or member.fset is None:
            state = "has no member" if member is None else "cannot change"
            raise AttributeError(f"{type(self).__name__} {state} {name!r}")
        member.fset(self, value)

    def __delattr__(self, name: str) -> None:
        raise AttributeError(f"{type(self).__name__}: members cannot be deleted")

    def _identity(self) -> Optional[int]:
        # Whoever holds the object holds its identity too.
        identity = _platform.query(self, IID_IUnknown)
        _platform.Release(identity)
        return identity

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Object) and self._identity() == other._identity()

    def __hash__(self) -> int:
        return hash(self._identity())


class KeyedCollection(Object):
    """A collection: elements by their key or by their number from 1 on, in the order of the component."""

    __slots__ = ()
    __class_getitem__ = classmethod(GenericAlias)

    def __getitem__(self, index: Any) -> Any:
        try:
            return call(self, self._interface.member(DISPID_VALUE), [index])
        except _errors.Error as error:
            if error.number not in _NOT_FOUND:
                raise
            raise _errors.NotFound(*error.args) from None

    def __iter__(self) -> Any:
        return call(self, self._interface.member(DISPID_NEWENUM), [])

    def __len__(self) -> int:
        return self.Count

    def __contains__(self, wanted: object) -> bool:
        """Whether an element has this key, or is this object."""
        if not isinstance(wanted, str):
            return any(element == wanted for element in self)
        try:
            self[wanted]
        except _errors.NotFound:
            return False
        return True


class Walk(_platform.Pointer):
    """A walk over a collection. Elements may be added and removed meanwhile."""

    __slots__ = ()

    def __iter__(self) -> "Walk":
        return self

    def __next__(self) -> Any:
        address = _platform.address_of(self)
        if not address:
            raise StopIteration
        element = VARIANT()
        _platform.SetErrorInfo(0, None)
        status = _platform.Next(address, 1, byref(element), None)
        _platform.check(status)
        if status != 0:
            _platform.Release(_platform.detach(self))
            raise StopIteration
        try:
            return _wrap(_values.take(element))
        finally:
            _platform.VariantClear(byref(element))

"""The type library: what it says about interfaces, classes and enumerations."""

import ctypes
from contextlib import contextmanager
from ctypes import byref, c_int32, c_uint32, c_void_p
from dataclasses import dataclass, field
from typing import Any, Iterator, Optional

from . import _platform
from ._layouts import (
    FUNCDESC, FUNCFLAG_FHIDDEN, GUID, MEMBERID_NIL, PARAMFLAG_FOPT, TKIND_COCLASS, TKIND_DISPATCH, TKIND_ENUM,
    TYPEATTR, TYPEDESC, TYPEFLAG_FCANCREATE, VARDESC, VT,
)
from ._platform import Pointer, method, receive, take_text

_GetTypeAttr = method(3, c_void_p)
_GetFuncDesc = method(5, c_uint32, c_void_p)
_GetVarDesc = method(6, c_uint32, c_void_p)
_GetNames = method(7, c_int32, c_void_p, c_uint32, c_void_p)
_GetRefTypeOfImplType = method(8, c_uint32, c_void_p)
_GetDocumentation = method(12, c_int32, c_void_p, c_void_p, c_void_p, c_void_p)
_GetRefTypeInfo = method(14, c_uint32, c_void_p)
_GetContainingTypeLib = method(18, c_void_p, c_void_p)
_ReleaseTypeAttr = method(19, c_void_p, result=None)
_ReleaseFuncDesc = method(20, c_void_p, result=None)
_ReleaseVarDesc = method(21, c_void_p, result=None)
_GetTypeInfoCount = method(3, result=c_uint32)
_GetTypeInfoOfLibrary = method(4, c_uint32, c_void_p)

# ---- what is known of the library


@dataclass(frozen=True)
class Type:
    tag: int
    interface: Optional[bytes] = None  # of an object of the library

    @property
    def is_object(self) -> bool:
        return self.tag in (VT.DISPATCH, VT.UNKNOWN)

    @property
    def is_variant(self) -> bool:
        return self.tag == VT.VARIANT


@dataclass(frozen=True)
class Parameter:
    name: str
    type: Type
    optional: bool


@dataclass(frozen=True)
class Member:
    name: str
    id: int
    kind: int  # one of Kind
    parameters: list[Parameter]
    result: Type
    help: str
    hidden: bool


@dataclass
class Interface:
    id: bytes
    name: str
    help: str
    members: list[Member]
    class_id: Optional[bytes] = None  # where clients can create it

    def member(self, member_id: int) -> Optional[Member]:
        return next((member for member in self.members if member.id == member_id), None)


@dataclass(frozen=True)
class Enumeration:
    name: str
    help: str
    constants: dict[str, int]


@dataclass
class Library:
    interfaces: dict[bytes, Interface] = field(default_factory=dict)
    enumerations: list[Enumeration] = field(default_factory=list)


# ---- reading it


class _Info:
    """One type, as its type information describes it."""

    def __init__(self, pointer: Pointer) -> None:
        self._this = pointer
        with self._record(TYPEATTR, _GetTypeAttr, _ReleaseTypeAttr) as attributes:
            self.id = bytes(attributes.guid)
            self.kind = attributes.typekind
            self.flags = attributes.wTypeFlags
            self._functions = attributes.cFuncs
            self._constants = attributes.cVars

    @contextmanager
    def _record(self, layout: Any, get: Any, release: Any, *index: int) -> Iterator[Any]:
        address = receive(get, self._this._address, *index)
        try:
            yield layout.from_address(address)
        finally:
            release(self._this._address, address)

    def documentation(self, member: int = MEMBERID_NIL) -> tuple[str, str]:
        """The name and the help text of a member, or of the type itself."""
        name, text = c_void_p(), c_void_p()
        _platform.check(_GetDocumentation(self._this._address, member, byref(name), byref(text), None, None))
        return take_text(name.value), take_text(text.value)

    def referred(self, reference: int) -> "_Info":
        return _Info(Pointer._own(receive(_GetRefTypeInfo, self._this._address, reference)))

    def implemented(self) -> "_Info":
        reference = c_uint32()
        _platform.check(_GetRefTypeOfImplType(self._this._address, 0, byref(reference)))
        return self.referred(reference.value)

    def members(self) -> list[Member]:
        return [self._member(index) for index in range(self._functions)]

    def constants(self) -> dict[str, int]:
        return dict(self._constant(index) for index in range(self._constants))

    def _member(self, index: int) -> Member:
        with self._record(FUNCDESC, _GetFuncDesc, _ReleaseFuncDesc, index) as function:
            name, *names = self._names(function.memid, 1 + function.cParams)
            names += ["value"] * (function.cParams - len(names))  # a value put has no name
            parameters = [
                Parameter(names[i], self._type(element.tdesc), bool(element.wParamFlags & PARAMFLAG_FOPT))
                for i, element in enumerate(function.lprgelemdescParam[: function.cParams])
            ]
            return Member(
                name,
                function.memid,
                function.invkind,
                parameters,
                self._type(function.elemdescFunc.tdesc),
                self.documentation(function.memid)[1],
                bool(function.wFuncFlags & FUNCFLAG_FHIDDEN),
            )

    def _names(self, member: int, room: int) -> list[str]:
        names, count = (c_void_p * room)(), c_uint32()
        _platform.check(_GetNames(self._this._address, member, names, room, byref(count)))
        return [take_text(name) for name in names[: count.value]]

    def _type(self, described: TYPEDESC) -> Type:
        # An argument by reference is passed like any other.
        while described.vt == VT.PTR:
            described = TYPEDESC.from_address(described.target)
        if described.vt != VT.USERDEFINED:
            return Type(described.vt)
        target = self.referred(described.target & 0xFFFFFFFF)
        return Type(VT.I4) if target.kind == TKIND_ENUM else Type(VT.DISPATCH, target.id)

    def _constant(self, index: int) -> tuple[str, int]:
        with self._record(VARDESC, _GetVarDesc, _ReleaseVarDesc, index) as constant:
            return self.documentation(constant.memid)[0], constant.lpvarValue[0].lVal


def interface_of(address: int) -> Optional[bytes]:
    """The identifier of the interface that an object's members are those of."""
    found, attributes = c_void_p(), c_void_p()
    if _platform.GetTypeInfo(address, 0, 0, byref(found)) < 0 or not found.value:
        return None
    info = Pointer._own(found.value)
    if _GetTypeAttr(info._address, byref(attributes)) < 0:
        return None
    identifier = ctypes.string_at(attributes.value, ctypes.sizeof(GUID))  # where the record begins
    _ReleaseTypeAttr(info._address, attributes.value)
    return identifier


def library_of(pointer: Pointer) -> Library:
    """The whole type library of an object."""
    info = Pointer._own(receive(_platform.GetTypeInfo, _platform.address_of(pointer), 0, 0))
    found = c_void_p()
    _platform.check(_GetContainingTypeLib(info._address, byref(found), byref(c_uint32())))
    held = Pointer._own(found.value)
    types = [
        _Info(Pointer._own(receive(_GetTypeInfoOfLibrary, held._address, index)))
        for index in range(_GetTypeInfoCount(held._address))
    ]
    library = Library()
    for each in sorted(types, key=lambda each: each.kind == TKIND_COCLASS):  # after their interfaces
        _add(library, each)
    return library


def _add(library: Library, info: _Info) -> None:
    name, text = info.documentation()
    if info.kind == TKIND_ENUM:
        library.enumerations.append(Enumeration(name, text, info.constants()))
    elif info.kind == TKIND_DISPATCH:
        library.interfaces[info.id] = Interface(info.id, name.lstrip("_"), text, info.members())
    elif info.kind == TKIND_COCLASS:
        interface = library.interfaces[info.implemented().id]
        interface.name, interface.help = name, text or interface.help
        interface.class_id = info.id if info.flags & TYPEFLAG_FCANCREATE else None

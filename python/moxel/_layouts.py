"""The binary layouts and the numbers of the automation interfaces."""

import ctypes
from ctypes import POINTER, c_double, c_float, c_int8, c_int16, c_int32, c_int64, c_size_t
from ctypes import c_uint8, c_uint16, c_uint32, c_uint64, c_void_p
from typing import Any
from uuid import UUID


class VT:
    """What a variant holds, and the types of the type library."""

    EMPTY, NULL, I2, I4, R4, R8 = range(6)
    DATE, BSTR, DISPATCH, ERROR, BOOL, VARIANT, UNKNOWN = range(7, 14)
    I1, UI1, UI2, UI4, I8, UI8, INT, UINT, VOID = range(16, 25)
    PTR, USERDEFINED = 26, 29


class Kind:
    """What a call by name can be."""

    METHOD, GET, PUT, PUT_REFERENCE = 1, 2, 4, 8


DISPID_VALUE, DISPID_PROPERTYPUT, DISPID_NEWENUM = 0, -3, -4
DISP_E_PARAMNOTFOUND, DISP_E_TYPEMISMATCH, DISP_E_EXCEPTION, DISP_E_OVERFLOW = (
    code - (1 << 32) for code in (0x80020004, 0x80020005, 0x80020009, 0x8002000A)
)
TKIND_ENUM, TKIND_DISPATCH, TKIND_COCLASS = 0, 4, 5
TYPEFLAG_FCANCREATE, FUNCFLAG_FHIDDEN, PARAMFLAG_FOPT = 0x02, 0x40, 0x10
MEMBERID_NIL = -1


def identifier(text: str) -> bytes:
    """An identifier as it lies in memory."""
    return UUID(text).bytes_le


GUID_NULL = bytes(16)
IID_IUnknown = identifier("00000000-0000-0000-C000-000000000046")
IID_IClassFactory = identifier("00000001-0000-0000-C000-000000000046")
IID_IDispatch = identifier("00020400-0000-0000-C000-000000000046")
IID_IEnumVARIANT = identifier("00020404-0000-0000-C000-000000000046")


def _record(name: str, base: Any = ctypes.Structure, **fields: Any) -> Any:
    return type(name, (base,), {"_fields_": list(fields.items()), "__module__": __name__})


GUID = c_uint8 * 16
_Content = _record(
    "_Content", ctypes.Union, llVal=c_int64, lVal=c_int32, iVal=c_int16, cVal=c_int8, bVal=c_uint8,
    uiVal=c_uint16, ulVal=c_uint32, ullVal=c_uint64, fltVal=c_float, dblVal=c_double, boolVal=c_int16,
    pointer=c_void_p, record=c_void_p * 2,
)


class VARIANT(ctypes.Structure):
    _anonymous_ = ("content",)
    _fields_ = [("vt", c_uint16), ("reserved", c_uint16 * 3), ("content", _Content)]


DISPPARAMS = _record(
    "DISPPARAMS", rgvarg=c_void_p, rgdispidNamedArgs=c_void_p, cArgs=c_uint32, cNamedArgs=c_uint32
)
EXCEPINFO = _record(
    "EXCEPINFO", wCode=c_uint16, wReserved=c_uint16, bstrSource=c_void_p, bstrDescription=c_void_p,
    bstrHelpFile=c_void_p, dwHelpContext=c_uint32, pvReserved=c_void_p, pfnDeferredFillIn=c_void_p,
    scode=c_int32,
)

# VT.PTR: `target` is the address of what is pointed at; VT.USERDEFINED: a reference, in its lower half.
TYPEDESC = _record("TYPEDESC", target=c_size_t, vt=c_uint16)
ELEMDESC = _record("ELEMDESC", tdesc=TYPEDESC, pparamdescex=c_void_p, wParamFlags=c_uint16)
TYPEATTR = _record(
    "TYPEATTR", guid=GUID, lcid=c_uint32, dwReserved=c_uint32, memidConstructor=c_int32,
    memidDestructor=c_int32, lpstrSchema=c_void_p, cbSizeInstance=c_uint32, typekind=c_int32, cFuncs=c_uint16,
    cVars=c_uint16, cImplTypes=c_uint16, cbSizeVft=c_uint16, cbAlignment=c_uint16, wTypeFlags=c_uint16,
    wMajorVerNum=c_uint16, wMinorVerNum=c_uint16, tdescAlias=TYPEDESC, idldescType=c_size_t * 2,
)
FUNCDESC = _record(
    "FUNCDESC", memid=c_int32, lprgscode=c_void_p, lprgelemdescParam=POINTER(ELEMDESC), funckind=c_int32,
    invkind=c_int32, callconv=c_int32, cParams=c_int16, cParamsOpt=c_int16, oVft=c_int16, cScodes=c_int16,
    elemdescFunc=ELEMDESC, wFuncFlags=c_uint16,
)
VARDESC = _record(
    "VARDESC", memid=c_int32, lpstrSchema=c_void_p, lpvarValue=POINTER(VARIANT), elemdescVar=ELEMDESC,
    wVarFlags=c_uint16, varkind=c_int32,
)

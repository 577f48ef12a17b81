"""The classes that describe the component's objects to Python: members, signatures, help texts."""

from datetime import datetime
from inspect import Parameter as Argument
from inspect import Signature
from typing import Any, Callable, Collection, Optional

from . import _objects, _values
from ._layouts import DISPID_NEWENUM, VT, Kind
from ._types import Interface, Member, Type

_POSITIONAL_OR_NAMED = Argument.POSITIONAL_OR_KEYWORD
# Other types are numbers without a fraction.
_PYTHON_TYPES = {
    **dict.fromkeys((VT.VOID, VT.EMPTY)),
    **dict.fromkeys((VT.R4, VT.R8), float),
    **dict.fromkeys((VT.UNKNOWN, VT.VARIANT), Any),
    VT.BOOL: bool,
    VT.BSTR: str,
    VT.DATE: datetime,
}


def make_classes(interfaces: Collection[Interface]) -> None:
    """Makes the class of each interface, as the type library describes it."""
    for interface in interfaces:
        base = _objects.KeyedCollection if interface.member(DISPID_NEWENUM) else _objects.Object
        contents = {
            "__slots__": (),
            "__module__": "moxel",
            "__doc__": interface.help or None,
            "_interface": interface,
            "_members": {},
        }
        _objects.classes[interface.id] = type(interface.name, (base,), contents)
    # When all are there, since they name each other.
    for interface in interfaces:
        _add_members(_objects.classes[interface.id], interface)


def _add_members(owner: Any, interface: Interface) -> None:
    by_name: dict[str, dict[int, Member]] = {}
    for member in interface.members:
        by_name.setdefault(member.name, {})[member.kind] = member
    for name, kinds in by_name.items():
        function = kinds.get(Kind.METHOD) or kinds.get(Kind.GET)
        is_method = function and (function.kind == Kind.METHOD or function.parameters)
        descriptor = _method(function) if is_method else _property(kinds)
        owner._members[name.lower()] = descriptor
        if not any(member.hidden for member in kinds.values()):
            setattr(owner, name, descriptor)


def _method(member: Member) -> Callable[..., Any]:
    signature = _signature(member)
    published = {parameter.name.lower(): parameter.name for parameter in member.parameters}

    def function(self: _objects.Object, *values: Any, **named: Any) -> Any:
        if named or len(values) != len(member.parameters):
            try:
                values = _arrange(signature, published, (self, *values), named)
            except TypeError as error:
                raise TypeError(f"{member.name}: {error}") from None
        return _objects.call(self, member, values)

    return _described(function, member, signature)


def _arrange(signature: Signature, published: dict[str, str], values: Any, named: dict[str, Any]) -> Any:
    """One value a parameter; names of parameters in any letter case."""
    spelled: dict[str, Any] = {}
    for name, value in named.items():
        name = published.get(name.lower(), name)
        if name in spelled:
            raise TypeError(f"multiple values for argument {name!r}")
        spelled[name] = value
    bound = signature.bind(*values, **spelled)
    bound.apply_defaults()
    return bound.args[1:]  # without the object itself


def _property(kinds: dict[int, Member]) -> property:
    get = kinds.get(Kind.GET)
    put, put_reference = kinds.get(Kind.PUT), kinds.get(Kind.PUT_REFERENCE)

    def getter(self: _objects.Object) -> Any:
        return _objects.call(self, get, [])

    def setter(self: _objects.Object, value: Any) -> None:
        by_reference = put_reference and (not put or isinstance(value, _objects.Object))
        _objects.call(self, put_reference if by_reference else put, [value])

    any_put = put or put_reference
    return property(
        get and _described(getter, get, _signature(get)),
        any_put and _described(setter, any_put, _signature(any_put)),
        doc=next(iter(kinds.values())).help or None,
    )


def _described(function: Any, member: Member, signature: Signature) -> Any:
    function.__name__ = function.__qualname__ = member.name
    function.__module__ = "moxel"
    function.__doc__ = member.help or None
    function.__signature__ = signature
    return function


def _signature(member: Member) -> Signature:
    arguments = [Argument("self", _POSITIONAL_OR_NAMED)]
    for parameter in member.parameters:
        default = None if parameter.optional else Argument.empty
        kind = _annotation_of_argument(parameter.type)
        arguments.append(Argument(parameter.name, _POSITIONAL_OR_NAMED, default=default, annotation=kind))
    return Signature(arguments, return_annotation=annotation(member.result))


def annotation(of_type: Type) -> Any:
    """What Python calls the type of a result."""
    if of_type.tag == VT.DISPATCH:
        return _objects.classes.get(of_type.interface, _objects.Object)
    return _PYTHON_TYPES.get(of_type.tag, int)


def _annotation_of_argument(of_type: Type) -> Any:
    if of_type.is_variant:
        return _values.Value
    return Optional[annotation(of_type)] if of_type.is_object else annotation(of_type)

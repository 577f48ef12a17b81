"""What the package gets from the component's type library. It is read when this module is first imported."""

from enum import IntEnum
from typing import Any

from . import _classes, _objects, _types, _values
from ._layouts import identifier

# Any class of the component leads to its type library; this one touches nothing when it is made.
_FIRST_CLASS = identifier("30B380C2-1127-4696-87A1-3180B451D209")


def _make_enumeration(described: _types.Enumeration) -> Any:
    prefix = described.name + "_"
    constants = {
        name[len(prefix) :] if name.startswith(prefix) else name: value
        for name, value in described.constants.items()
    }
    enumeration = IntEnum(described.name, constants, module="moxel")
    enumeration.__doc__ = described.help or None
    return enumeration


def _make_exports() -> dict[str, Any]:
    library = _types.library_of(_objects.Object._own(_objects.create(_FIRST_CLASS)))
    _classes.make_classes(library.interfaces.values())
    classes = [*_objects.classes.values(), *GENERAL]
    enumerations = [_make_enumeration(each) for each in library.enumerations]
    return {**{each.__name__: each for each in enumerations + classes}, "NULL": _values.NULL}


GENERAL = (_objects.Object, _objects.KeyedCollection, _values.Value)
for _each in GENERAL:
    _each.__module__ = "moxel"
exports = _make_exports()

"""Prints the type stubs of the package, as the component's type library describes it.

    python -m moxel.stubs > python/moxel/__init__.pyi
"""

import enum
import inspect
import sys
import textwrap
from datetime import datetime
from typing import Any, Iterator, Optional, get_args

from . import _classes, _library, _objects
from ._layouts import DISPID_VALUE

_WIDTH = 110
_HEAD = '''\
# Printed by "python -m moxel.stubs": type checkers read it in the place of the package.
import datetime
import enum
from typing import Any, Generic, Iterator, Optional, TypeVar, Union

import moxel

_T = TypeVar("_T")

class _Null: ...

NULL: _Null

class Error(Exception):
    number: int
    source: str
    description: str
    def __init__(self, number: int, source: str = "", description: str = "") -> None: ...

class NotFound(Error, KeyError, IndexError): ...

class Object:
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...

Value = Union[None, _Null, bool, int, float, str, datetime.date, Object]

class KeyedCollection(Object, Generic[_T]):
    def __getitem__(self, index: Union[str, int]) -> _T: ...
    def __iter__(self) -> Iterator[_T]: ...
    def __len__(self) -> int: ...
    def __contains__(self, wanted: object) -> bool: ...

# A property that can be given no object, though it always answers one.
class _Replaceable(Generic[_T]):
    def __get__(self, owner: Any, kind: Any = None) -> _T: ...
    def __set__(self, owner: Any, value: Optional[_T]) -> None: ...
'''


def lines() -> Iterator[str]:
    yield _HEAD
    for exported in _library.exports.values():
        if exported not in (*_library.GENERAL, _library.exports["NULL"]):
            yield from _enumeration(exported) if issubclass(exported, enum.Enum) else _class(exported)
            yield ""


def _enumeration(described: Any) -> Iterator[str]:
    yield f"class {described.__name__}(enum.IntEnum):"
    yield from _help(described, 4)
    for constant in described:
        yield f"    {constant.name} = {constant.value}"


def _class(described: Any) -> Iterator[str]:
    members = {name: each for name, each in vars(described).items() if not name.startswith("_")}
    yield f"class {described.__name__}({_base(described)}):" + ("" if members else " ...")
    yield from _help(described, 4)
    for name, member in members.items():
        yield from _property(name, member) if isinstance(member, property) else _method(member)


def _base(described: Any) -> str:
    if not issubclass(described, _objects.KeyedCollection):
        return "Object"
    item = described._interface.member(DISPID_VALUE)
    return f"KeyedCollection[{_spelled(_classes.annotation(item.result))}]"


def _property(name: str, described: property) -> Iterator[str]:
    if described.fset is None:
        yield "    @property"
        yield from _method(described.fget)
        return
    answered = described.fget and inspect.signature(described.fget).return_annotation
    taken = list(inspect.signature(described.fset).parameters.values())[-1].annotation
    if answered and taken == Optional[answered]:
        yield f"    {name}: _Replaceable[{_spelled(answered)}]"
    else:
        yield f"    {name}: {_spelled(answered or taken)}"
    yield from _help(described, 4)


def _method(described: Any) -> Iterator[str]:
    signature = inspect.signature(described)
    arguments = [_argument(each) for each in signature.parameters.values()]
    head = f"    def {described.__name__}("
    tail = f") -> {_spelled(signature.return_annotation)}:" + ("" if described.__doc__ else " ...")
    if len(head) + len(", ".join(arguments)) + len(tail) <= _WIDTH:
        yield head + ", ".join(arguments) + tail
    else:
        yield head
        yield from (f"        {argument}," for argument in arguments)
        yield "    " + tail
    yield from _help(described, 8)


def _argument(described: inspect.Parameter) -> str:
    if described.annotation is inspect.Parameter.empty:
        return described.name
    default = "" if described.default is inspect.Parameter.empty else " = None"
    return f"{described.name}: {_spelled(described.annotation)}{default}"


def _help(described: Any, indent: int) -> Iterator[str]:
    text = (described.__doc__ or "").replace("\\", "\\\\").replace('"""', '\\"""')
    if text.endswith('"'):
        text = text[:-1] + '\\"'
    margin = " " * indent
    if text:
        yield "\n".join(textwrap.wrap(f'{margin}"""{text}"""', _WIDTH, subsequent_indent=margin))


# Names of the package stand behind its own: inside a class, a member may have the same.
def _spelled(annotation: Any) -> str:
    if annotation in (None, Any):
        return "None" if annotation is None else "Any"
    if annotation is datetime:
        return "datetime.datetime"
    if isinstance(annotation, type):
        return annotation.__name__ if annotation.__module__ == "builtins" else f"moxel.{annotation.__name__}"
    return f"Optional[{_spelled(get_args(annotation)[0])}]"


if __name__ == "__main__":
    sys.stdout.reconfigure(encoding="utf-8")
    print("\n".join(lines()), end="")

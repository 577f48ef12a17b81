"""Client of MOXEL Components.

    import moxel

    root = moxel.Root()
    root.Domaines["Sales"].Initialize(1, 1)
    for scenario in root.Scenarios:
        if scenario.State == moxel.MXScenarioState.Pause:
            print(scenario.key)

The classes and enumerations are those of the component's type library, which is loaded when one of them is
first asked for: from the path in the environment variable MOXEL_LIBRARY, else from the release build of the
source tree that the package lies in, else as the system's loader finds libmoxel.so. Members and arguments are
named in any letter case.

Values: no object, an omitted argument, nothing at all and null are None (to pass a null: `moxel.NULL`); dates
are datetimes without time zone; True is -1 where a number is wanted, as everywhere in automation, so write 1.

A refusal raises `moxel.Error`. An object is used on the thread that made it.
"""

from typing import Any

from ._errors import Error as Error
from ._errors import NotFound as NotFound

Error.__module__ = NotFound.__module__ = __name__


def __getattr__(name: str) -> Any:
    if not name.startswith("_"):
        from . import _library

        if name in _library.exports:
            return _library.exports[name]
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")


def __dir__() -> list[str]:
    from . import _library

    return sorted({*globals(), *_library.exports})

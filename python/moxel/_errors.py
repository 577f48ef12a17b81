"""The errors that callers catch."""

_RUNTIME_ERRORS = 0x800A0000
_TEXTS = {
    0x80004001: "Not implemented",
    0x80004002: "No such interface",
    0x80004003: "An object is needed",
    0x80004005: "Unspecified failure",
    0x8000FFFF: "Unexpected failure",
    0x8007000E: "Out of memory",
    0x80070057: "Invalid argument",
    0x80020003: "Member not found",
    0x80020005: "Type mismatch",
    0x80020006: "Unknown name",
    0x80020008: "Bad variable type",
    0x8002000A: "Overflow",
    0x8002000B: "Bad index",
    0x8002000E: "Wrong number of arguments",
    0x8002000F: "Argument not optional",
    0x80040111: "Class not available",
}


class Error(Exception):
    """A refusal of the component, or a failure on the way to it.

    `number`: runtime errors have their plain number (5, 6, 9, 13, 94, 326, 457); the refusals of the object
    model those of the enumerations (`moxel.MXDomainError`, ...); others the result code of the call, as a
    signed 32-bit integer. `source` is the operation that refused, `description` the message.
    """

    def __init__(self, number: int, source: str = "", description: str = "") -> None:
        super().__init__(number, source, description)
        self.number = number
        self.source = source
        self.description = description

    def __str__(self) -> str:
        origin = f"{self.source}, " if self.source else ""
        return f"{self.description or 'Automation error'} ({origin}error {self.number})"


class NotFound(Error, KeyError, IndexError):
    """A collection holds nothing under the key or at the position asked for; so it is also what
    Python raises then."""


def from_result(result: int, detail: str = "") -> Error:
    """The error of a failing result code that nothing else describes."""
    text = _TEXTS.get(result & 0xFFFFFFFF, "Automation error")
    return Error(number_of(result), "MOXEL", text + detail)


def number_of(result: int) -> int:
    """The number that clients know a failing result by."""
    return result & 0xFFFF if (result & 0xFFFF0000) == _RUNTIME_ERRORS else result

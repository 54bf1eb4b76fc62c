# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Exceptions for what the library refuses or cannot do."""

from __future__ import annotations

from enum import IntEnum
from typing import NamedTuple

from . import _binding


class FailureKind(IntEnum):
    """What kind of failure an error object of the library tells of."""

    UNKNOWN = 0
    LOGIC_ERROR = 1
    INVALID_ARGUMENT = 2
    LENGTH_ERROR = 3
    OUT_OF_RANGE = 4
    RUNTIME_ERROR = 5
    NOT_STANDARD = 6
    OTHER = 7  # above all, what OpenCL reports


class Failure(NamedTuple):
    """One error object of the library."""

    kind: FailureKind
    message: str


class Error(Exception):
    """A failure. Its text tells the whole chain in one line.

    Attributes:
        code: the result of the library, such as -3 for a request that makes no sense; 0 if the package itself refuses
        chain: the error and what it came from, the outermost first; empty if the library had no error object
    """

    def __init__(self, text: str, code: int = 0, chain: tuple[Failure, ...] = ()) -> None:
        super().__init__(text)
        self.code = code
        self.chain = chain


class LogicFailure(Error, ValueError):
    """The call makes no sense, such as a launch with an argument that the kernel does not take."""


class RuntimeFailure(Error, RuntimeError):
    """The call could not be carried out: above all, what OpenCL reports."""


class OutOfMemory(Error, MemoryError):
    """The host is out of memory."""


class UnknownFailure(Error):
    """No more is known; also every call after the library has stopped."""


class ForkedProcess(Error, RuntimeError):
    """The process was forked off one that had used the library already: it has no library."""


class NoDevice(Error, LookupError):
    """The machine has no such device."""


class KernelNotFound(Error, AttributeError, KeyError):
    """The program has no kernel of that name."""

    __str__ = Exception.__str__  # a KeyError would show the text in quotation marks


class BuildError(Error):
    """A program does not build. `log` is what the compiler said."""

    def __init__(self, text: str, log: str = "") -> None:  # made of its text alone when it comes from another process
        super().__init__(text)
        self.log = log


_FORKED = (
    "This process was forked off one that had used OpenCL already, and devices do not survive that. Use OpenCL in the"
    " child only, or start children afresh: multiprocessing.get_context('spawn')."
)
_CLASSES = {-2: OutOfMemory, -3: LogicFailure, -4: RuntimeFailure}
_TEXTS = {-2: "Out of memory.", -1: "Unknown failure."}


def _make_exception(code: int, chain: list[tuple[int, str]], is_forked_child: bool) -> Error:
    if is_forked_child:
        return ForkedProcess(_FORKED, code)
    failures = tuple(Failure(FailureKind(kind) if kind <= 7 else FailureKind.UNKNOWN, text) for kind, text in chain)
    text = ": ".join(each.message for each in failures) or _TEXTS.get(code, "Unknown failure.")
    return _CLASSES.get(code, UnknownFailure)(text, code, failures)


_binding.set_exception_maker(_make_exception)

# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Kernels, the ranges of their launches, and what they take."""

from __future__ import annotations

import re
from operator import index
from typing import Any, NoReturn, Self, SupportsIndex

import numpy as np

from . import _binding
from ._array import Array, ArrayOf, View, short_text
from ._handle import Handle
from ._types import Vector, code_of_value, native, value_of

_ANY, _NUMBER, _MEMORY, _LOCAL = range(4)


class Local(_binding.Words):
    """Memory local to each work-group, without content: as an argument, for `count` elements of a type; for
    Kernel.takes, without a count."""

    dtype: Any
    count: int | None
    code: int

    def __new__(cls, dtype: Any, count: int | None = None) -> Self:
        code = dtype.code if isinstance(dtype, Vector) else code_of_value(native(dtype))
        made = super().__new__(cls, True, code, _count(count or 0))
        made.dtype, made.count, made.code = dtype, count, code
        return made

    def __repr__(self) -> str:
        return f"tarva.Local({_name(self.dtype)}{'' if self.count is None else f', {self.count}'})"


class Range(_binding.Words):
    """A range of work-items in groups of the library's choosing; sizes are given for one, two or three dimensions.

    Plain sizes, as in kernel((640, 480), ...), need none of this. `D` is the group size that the kernel prefers: the
    one fixed in its source, else about as large as the kernel can have, and equally long in each dimension.
    """

    _text: str

    def __new__(cls, *_: Any) -> Self:
        raise TypeError("a Range is made by at_least, groups and the like; plain sizes are a range as they stand")

    @classmethod
    def _make(cls, text: str, kind: int, *words: int) -> Self:
        made = super().__new__(cls, False, kind, *words)
        made._text = text
        return made

    @classmethod
    def at_least(cls, *sizes: SupportsIndex) -> Self:
        """At least so many work-items in each dimension, and not less than `D`, in groups of `D`."""
        return cls._make(f"at_least{_sizes(sizes)}", 2, len(sizes), *_sizes(sizes))

    @classmethod
    def groups(cls, number: SupportsIndex) -> Self:
        """So many groups of `D`, in one dimension."""
        return cls._make(f"groups({number})", 3, _count(number))

    @classmethod
    def groups_of(cls, number: SupportsIndex, *sizes: SupportsIndex) -> Self:
        """In each dimension so many groups of this size."""
        return cls._make(f"groups_of({number}, *{_sizes(sizes)})", 4, len(sizes), _count(number), *_sizes(sizes))

    @classmethod
    def groups_per_unit(cls, number: SupportsIndex) -> Self:
        """For each compute unit so many groups of `D`, in one dimension."""
        return cls._make(f"groups_per_unit({number})", 5, _count(number))

    @classmethod
    def group_per_unit_of(cls, *sizes: SupportsIndex) -> Self:
        """In each dimension one group of this size for each compute unit."""
        return cls._make(f"group_per_unit_of{_sizes(sizes)}", 6, len(sizes), 0, *_sizes(sizes))

    def __repr__(self) -> str:
        return f"tarva.Range.{self._text}"


def _count(number: SupportsIndex) -> int:
    if not 0 <= index(number) < 2**64:
        raise ValueError(f"{number} is no number of elements or groups")
    return index(number)


def _sizes(sizes: tuple[SupportsIndex, ...]) -> tuple[int, ...]:
    if not 1 <= len(sizes) <= 3:
        raise ValueError(f"a range has one to three sizes, not {sizes}")
    return tuple(_count(size) for size in sizes)


def _name(dtype: Any) -> str:
    return repr(dtype) if isinstance(dtype, Vector) else f"np.{native(dtype)}"


class _Parameter:
    """What a parameter takes, and the words for it."""

    __slots__ = ("kind", "code", "wanted", "dtype")

    def __init__(self, declared: Any) -> None:
        self.kind, self.code = _ANY, 0
        self.dtype: Any = None
        if declared is Array or isinstance(declared, ArrayOf):
            self.kind, self.code = _MEMORY, declared.code if isinstance(declared, ArrayOf) else 0
            self.wanted = "a tarva.Array" if declared is Array else f"a {declared!r}"
        elif declared is Local or isinstance(declared, Local):
            if declared is Local:
                raise TypeError("local memory is declared with its type, as in tarva.Local(np.float32)")
            self.kind, self.code = _LOCAL, declared.code
            self.wanted = f"a number of elements of {_name(declared.dtype)}"
        elif isinstance(declared, Vector):
            self.code, self.dtype = declared.code, declared
            self.wanted = f"{declared.width} numbers for a {declared!r}"
        else:
            self._declare_value(declared)

    def _declare_value(self, declared: Any) -> None:
        try:
            self.dtype = native(declared)
        except TypeError:
            raise TypeError(
                f"a parameter takes a numpy type, a vector type as tarva.float4, tarva.Array, or tarva.Local(dtype),"
                f" not {declared!r}"
            ) from None
        self.code = code_of_value(self.dtype)
        self.wanted = f"an np.{self.dtype}" if self.dtype.kind != "V" else "a structure of its dtype"
        if self.dtype.kind in "iu" or self.dtype in (np.float32, np.float64):
            self.kind = _NUMBER

    def could_hold(self, value: Any) -> bool:
        """Whether the value is a number of the parameter's sort, though too large or too small for it."""
        is_whole = isinstance(value, (int, np.integer))
        return is_whole or (
            self.dtype is not None and self.dtype.kind == "f" and isinstance(value, (float, np.floating))
        )

    def to_bytes(self, value: Any) -> bytes:
        """A value that the binding does not convert itself."""
        if isinstance(self.dtype, Vector):
            return self.dtype.to_bytes(value)
        is_number = isinstance(value, (int, float, np.number))
        if self.dtype is None or isinstance(value, (str, bytes)) or (self.dtype.kind == "V" and is_number):
            raise TypeError
        with np.errstate(over="raise"):
            return np.asarray(value, self.dtype).reshape(()).tobytes()


class Kernel(_binding.Kernel, Handle):
    """A function of a program. To launch it, call it with a range, and then its arguments:

        kernel(1000, 3, x, y)                       1000 work-items
        kernel((640, 480), picture, group=(16, 8))  640 times 480 of them, in groups of 16 times 8
        kernel(1024, data, group=64, local=64)      with 64 elements for each parameter of local memory
        kernel(Range.groups_per_unit(4), data)      in groups of the library's choosing

    It returns when the launch has ended. `offset` is the first global id, `group` the size of a work-group, both with
    as many dimensions as the range. `local` gives the number of elements for the parameters that are declared as
    tarva.Local, in their order: a number, or a tuple of them.

    Arguments are Arrays; None for a null pointer; tarva.Local(dtype, count); and numbers, once takes() has said of
    which types the parameters are. Without it numbers have to be of numpy types, as np.float32(3).
    """

    __slots__ = ("name", "_source", "_parameters", "__weakref__")

    name: str
    _source: str | None
    _parameters: list[_Parameter] | None

    def takes(self, *parameters: Any) -> Kernel:
        """Says what the parameters take, so that numbers are converted, and wrong arguments are refused by name.

        For each parameter: a numpy type for a number or a structure; a vector type, as tarva.float4; tarva.Array, or
        tarva.Array[dtype] for elements of one type; tarva.Local(dtype) for local memory. Returns the kernel itself.
        """
        declared = [_Parameter(each) for each in parameters]
        count = self.properties["CL_KERNEL_NUM_ARGS"]
        if count != len(declared):
            raise ValueError(
                f"The kernel {self.name} has {count!r} parameters{self._signature()}, not {len(declared)}."
            )
        self._declare([(each.kind, each.code) for each in declared])
        self._parameters = declared
        return self

    def __repr__(self) -> str:
        return f"<tarva.Kernel {self.name}>"

    # What follows is called by the binding, where a launch does not take the short way.

    def _convert(self, index: int, value: Any) -> tuple[int, bytes]:
        try:
            if self._parameters is None:
                return value_of(value)
            parameter = self._parameters[index]
            return parameter.code, parameter.to_bytes(value)
        except (TypeError, ValueError, ArithmeticError) as failure:
            reason, wrong = str(failure), TypeError if isinstance(failure, TypeError) else ValueError
        self._refuse(index, value, reason, wrong)

    def _refuse(self, index: int, value: Any, reason: str = "", wrong: type[Exception] = TypeError) -> NoReturn:
        parameter = self._parameters[index] if self._parameters is not None else None
        text, shown = f"{self._parameter_text(index)} of kernel {self.name}", short_text(value)
        if isinstance(value, View):
            raise TypeError(f"{text} takes whole Arrays: give it a copy() of the view.")
        if isinstance(value, np.ndarray) and value.ndim > 0 and (parameter is None or parameter.kind == _MEMORY):
            raise TypeError(f"{text} takes no numpy array: give it a tarva.Array of it.")
        if parameter is None:
            told = f" ({reason})" if reason else ""
            raise TypeError(
                f"{text} is given {shown}, whose type is not known{told}: say it by np.float32({shown}) or the like,"
                f" or once for all by takes(...)."
            )
        if parameter.kind in (_NUMBER, _LOCAL) and parameter.could_hold(value):
            wrong = ValueError
        raise wrong(f"{text} takes {parameter.wanted}, not {shown}{f': {reason}' if reason else ''}.")

    def _refuse_count(self, given: int, local: Any) -> NoReturn:
        if self._parameters is None:
            raise TypeError(
                f"The keyword local needs the parameters of kernel {self.name}: declare them by takes(...)."
            )
        count = len(self._parameters)
        beside = "" if local is None else f" and local={local!r}"
        raise TypeError(
            f"The kernel {self.name} takes a range and then {count} arguments{self._signature()}, not {given}{beside}."
        )

    def _parameter_text(self, index: int) -> str:
        names = self._parameter_names()
        return f"Parameter {index} ({names[index]})" if index < len(names) else f"Parameter {index}"

    def _signature(self) -> str:
        names = self._parameter_names()
        return f" ({', '.join(names)})" if names else ""

    def _parameter_names(self) -> list[str]:
        """The names of the parameters as the source tells them, if it does so plainly."""
        source = re.sub(r"/\*.*?\*/|//[^\n]*", " ", self._source or "", flags=re.S)
        found = re.search(rf"\b{re.escape(self.name)}\s*\(([^()]*)\)\s*\{{", source)
        names = [re.search(r"(\w+)\s*(?:\[[^]]*\]\s*)?$", each) for each in found[1].split(",")] if found else []
        known = [name[1] for name in names if name is not None]
        return known if len(known) == self.properties["CL_KERNEL_NUM_ARGS"] else []

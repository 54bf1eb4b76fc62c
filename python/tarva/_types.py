# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The types of elements: how numpy's stand to the library's, and OpenCL's vectors."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np

# The library's numbers of scalar types, by numpy's names.
_SCALARS = {
    "uint8": 3, "int8": 4, "uint16": 5, "int16": 6, "uint32": 7, "int32": 8, "uint64": 9, "int64": 10,
    "float16": 11, "float32": 12, "float64": 13,
}  # fmt: skip
_BYTE = 3
_BOOLEAN = 2
_WIDTHS = (2, 3, 4, 8, 16)
_FIRST_VECTOR = 14


class Vector:
    """A vector type of OpenCL, such as tarva.float4.

    An array of it has one dimension more than it was asked for: Array(100, tarva.float4) has the shape (100, 4). A
    vector of three takes the room of four, so Array(100, tarva.float3) has that shape, too, and the last column is
    not used.
    """

    __slots__ = ("name", "component", "width", "dtype", "code")

    def __init__(self, name: str, component: str, width: int) -> None:
        self.name = name
        self.component = np.dtype(component)
        self.width = width
        #: numpy's type: components in a row, so that np.zeros(100, tarva.float4.dtype) has the shape (100, 4)
        self.dtype = np.dtype((component, (self.room,)))
        self.code = _FIRST_VECTOR + 5 * (_SCALARS[component] - _BYTE) + _WIDTHS.index(width)

    @property
    def room(self) -> int:
        """The number of components that it takes the room of."""
        return 4 if self.width == 3 else self.width

    def to_bytes(self, value: Any) -> bytes:
        """The vector with these components, or with this number in all of them."""
        given = np.asarray(value)
        if given.shape not in ((), (self.width,), (self.room,)):
            raise ValueError(f"{self.name} has {self.width} components")
        whole = np.zeros(self.room, self.component)
        whole[: max(self.width, given.size)] = convert(given, self.component)
        return whole.tobytes()

    def __repr__(self) -> str:
        return f"tarva.{self.name}"


_COMPONENTS = {
    "char": "int8", "uchar": "uint8", "short": "int16", "ushort": "uint16", "int": "int32", "uint": "uint32",
    "long": "int64", "ulong": "uint64", "half": "float16", "float": "float32", "double": "float64",
}  # fmt: skip
VECTORS = {
    f"{name}{width}": Vector(f"{name}{width}", component, width)
    for name, component in _COMPONENTS.items()
    for width in _WIDTHS
}


class Element(NamedTuple):
    """How the library holds an element of a numpy array."""

    code: int  # its type there
    size: int  # bytes of one of that type
    parts: int  # how many of these make the element


def element_of(dtype: np.dtype[Any]) -> Element:
    """How the library holds elements of a numpy type. Raises TypeError for a type that no device could use."""
    if dtype.name in _SCALARS:
        return Element(_SCALARS[dtype.name], dtype.itemsize, 1)
    if dtype.name in ("complex64", "complex128"):
        part = np.dtype("float32" if dtype.name == "complex64" else "float64")
        return Element(_SCALARS[part.name], part.itemsize, 2)
    if dtype.kind in "bVSU" and not dtype.hasobject and dtype.itemsize > 0:
        return Element(_BYTE, 1, dtype.itemsize)
    raise TypeError(
        f"OpenCL has no elements of {dtype}: there are integers and floats of up to 64 bits, complex numbers, bool,"
        " texts of a fixed length, and structures of these"
    )


def native(dtype: Any) -> np.dtype[Any]:
    """A numpy type from whatever stands for one, in the byte order of the machine."""
    known: np.dtype[Any] = np.dtype(dtype)
    return known.newbyteorder("=")


def convert(value: np.ndarray[Any, Any], dtype: np.dtype[Any]) -> np.ndarray[Any, Any]:
    """Values of another type: TypeError if it is of another kind, as floats for integers, ValueError if one does not
    fit."""
    if value.dtype == dtype:
        return value
    if value.dtype.kind in "iu" and dtype.kind in "iu":
        limits = np.iinfo(dtype)
        if value.size and (int(value.min()) < limits.min or int(value.max()) > limits.max):
            raise ValueError(f"{dtype} holds {limits.min} to {limits.max}, not {value.min()} to {value.max()}")
        return value.astype(dtype)
    if not np.can_cast(value.dtype, dtype, "same_kind"):
        raise TypeError(f"{value.dtype} is not converted to {dtype}: see to it with astype()")
    return value.astype(dtype)


# Types of bytes, by their size: a structure is handed to a kernel as one of them.
_OPAQUE = {1: _BYTE, **{width: VECTORS[f"uchar{width}"].code for width in (2, 4, 8, 16)}}
_OPAQUE.update({8 * width: VECTORS[f"ulong{width}"].code for width in (4, 8, 16)})


def value_of(value: Any) -> tuple[int, bytes]:
    """The type and the bytes of a value that says itself of which type it is, such as np.float32(3)."""
    if not isinstance(value, (np.generic, np.ndarray)) or value.ndim != 0:
        raise TypeError
    dtype = native(value.dtype)
    return code_of_value(dtype), value.astype(dtype).tobytes()


def code_of_value(dtype: np.dtype[Any]) -> int:
    """The library's type for a value that is passed to a kernel."""
    if dtype.name in _SCALARS:
        return _SCALARS[dtype.name]
    if dtype.kind == "V" and dtype.itemsize in _OPAQUE and not dtype.hasobject:
        return _OPAQUE[dtype.itemsize]
    if dtype.kind == "V":
        raise TypeError(
            f"a structure of {dtype.itemsize} bytes is not passed by value: pad it to one of"
            f" {', '.join(str(size) for size in sorted(_OPAQUE))} bytes, or give the kernel a pointer to it, and an"
            " Array of one element"
        )
    if dtype.kind == "b":
        raise TypeError("a kernel takes no bool: let the parameter be an int, and give an np.int32")
    raise TypeError(f"a kernel takes no {dtype}")


def constant_of(value: Any) -> tuple[int, bytes]:
    """The type and the bytes of a specialization constant."""
    if isinstance(value, (bool, np.bool_)):
        return _BOOLEAN, int(value).to_bytes(4, "little")
    try:
        return value_of(value)
    except TypeError:
        raise TypeError(f"a constant has a type, as np.int32(3) or True have, but {value!r} has none") from None

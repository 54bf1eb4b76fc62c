# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Memory objects, which look like numpy arrays."""

from __future__ import annotations

import math
from collections.abc import Iterator
from typing import Any

import numpy as np
from numpy.lib.stride_tricks import as_strided

from . import _binding
from ._handle import Handle
from ._types import Element, Vector, convert, element_of, native

Shape = tuple[int, ...]
NumpyArray = np.ndarray[Any, np.dtype[Any]]
_START = np.zeros((), np.uint8)


def _part(shape: Shape, key: Any) -> tuple[int, Shape]:
    """Where a part of an array in C order begins, and the shape of the part."""
    for each in key if isinstance(key, tuple) else (key,):
        if not isinstance(each, (int, slice, np.integer, type(Ellipsis))) or isinstance(each, bool):
            raise IndexError(
                f"a part is given by whole numbers and slices, not {short_text(each)}; np.asarray(array) takes more"
            )
    # A picture of the array with elements of one byte, of which none is ever touched: numpy itself does the arithmetic.
    strides = [math.prod(shape[axis + 1 :]) for axis in range(len(shape))]
    picture = as_strided(_START, shape, strides, writeable=False)
    part = picture[key if key is Ellipsis or isinstance(key, tuple) and Ellipsis in key else (*_tuple(key), ...)]
    if not part.flags.c_contiguous:
        raise IndexError(f"{key!r} of {shape} is no single range of elements; np.asarray(array) takes more")
    start = part.__array_interface__["data"][0] - picture.__array_interface__["data"][0]
    return (start if part.size else 0), part.shape


def _tuple(key: Any) -> tuple[Any, ...]:
    return key if isinstance(key, tuple) else (key,)


class Elements:
    """What arrays and parts of them can do. Everything here waits until it is done."""

    __slots__ = ()

    shape: Shape
    dtype: np.dtype[Any]

    def _place(self) -> tuple[Array, int]:
        """The array, and the position of the first element in it."""
        raise NotImplementedError

    @property
    def ndim(self) -> int:
        """The number of dimensions."""
        return len(self.shape)

    @property
    def size(self) -> int:
        """The number of elements."""
        return math.prod(self.shape)

    @property
    def nbytes(self) -> int:
        """The bytes of all elements."""
        return self.size * self.dtype.itemsize

    def __len__(self) -> int:
        if not self.shape:
            raise TypeError("a single element has no length")
        return self.shape[0]

    def read(self, out: NumpyArray | None = None) -> NumpyArray:
        """The content, in a new numpy array or in `out`, which has to be contiguous and of the same shape and dtype.

        Of an Array that has no content at all yet, a new array holds zeros, and `out` what it held before. Once there
        is some, elements that nobody has given are undefined.
        """
        if out is None:
            out = np.zeros(self.shape, self.dtype)
        elif out.shape != self.shape or out.dtype != self.dtype or not out.flags.c_contiguous:
            raise ValueError(f"out has to be contiguous, of {self.dtype} and shape {self.shape}, not {_about(out)}")
        array, start = self._place()
        if out.size:
            array._read(start * array._element.parts, out.reshape(-1).view(np.uint8))
        return out

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> NumpyArray:
        if copy is False:
            raise ValueError("the content of a tarva.Array cannot be had without a copy")
        content = self.read()
        return content if dtype is None else content.astype(dtype, copy=False)

    def __iter__(self) -> Iterator[Any]:
        return iter(self.read())

    def fill(self, value: Any) -> None:
        """The same value for all elements, or what numpy would repeat to this shape."""
        self[...] = value

    def copy(self) -> Array:
        """A new Array with the same content, copied where it is."""
        made = Array(self.shape, self.dtype)
        made[...] = self
        return made

    def __getitem__(self, key: Any) -> Any:
        """A part: a single element as a numpy scalar, else a View, whose content is read when it is needed.

        A part has to be one range of elements: whole numbers first, then one slice, and all of the rest.
        """
        start, shape = _part(self.shape, key)
        array, first = self._place()
        part = View(array, first + start, shape)
        return part if shape or key is Ellipsis else part.read()[()]

    def __setitem__(self, key: Any, value: Any) -> None:
        start, shape = (0, self.shape) if key is Ellipsis else _part(self.shape, key)
        array, first = self._place()
        if isinstance(value, Elements):
            array._copy_from(first + start, shape, value)
        else:
            array._assign(first + start, shape, value)

    def _describe(self) -> str:
        return f"of {self.dtype} and shape {self.shape}"


def _about(array: NumpyArray) -> str:
    return f"of {array.dtype} and shape {array.shape}"


class View(Elements):
    """A range of the elements of an Array. It is no memory object, so a kernel takes a copy() of it only."""

    __slots__ = ("base", "_start", "shape", "dtype")

    def __init__(self, base: Array, start: int, shape: Shape) -> None:
        self.base = base
        self._start = start
        self.shape = shape
        self.dtype = base.dtype

    def _place(self) -> tuple[Array, int]:
        return self.base, self._start

    def __repr__(self) -> str:
        return f"<tarva.View {self._describe()}>"


class ArrayOf:
    """Arrays with elements of one type: what tarva.Array[np.float32] is, for Kernel.takes."""

    __slots__ = ("dtype", "code")

    def __init__(self, dtype: Any) -> None:
        self.dtype = dtype.component if isinstance(dtype, Vector) else native(dtype)
        self.code = element_of(self.dtype).code

    def __repr__(self) -> str:
        return f"tarva.Array[{self.dtype}]"


class _Indexable(type):
    """Lets the class itself be indexed."""

    def __getitem__(cls, dtype: Any) -> ArrayOf:
        return ArrayOf(dtype)


class Array(_binding.Memory, Handle, Elements, metaclass=_Indexable):
    """A memory object: elements of one type, which belong to no device and are moved to where they are used.

        Array(ndarray)         as many elements as a numpy array has, with its content
        Array(shape, dtype)    elements without content, for a kernel to write

    `shape` is a number of elements or a tuple of them; `dtype` is a numpy type or a vector type, such as tarva.float4,
    which adds a dimension for the components. A kernel finds structures as bytes, with numpy's layout of them: make the
    dtype with align=True to have that of C. Complex numbers are vectors of two, and bool is a byte.

    The array is given up by close(), at the end of a `with` block, or when nothing refers to it any more.
    """

    __slots__ = ("shape", "dtype", "label", "_element", "__weakref__")

    label: str
    _element: Element

    def __init__(self, content: Any, dtype: Any = None, *, label: str = "") -> None:
        values: NumpyArray | None = None
        shape, wanted = _shape_of(content), dtype
        if shape is None:
            values = _values_of(content)
            shape, wanted = values.shape, values.dtype if dtype is None else dtype
        elif dtype is None:
            raise TypeError(f"Array({content!r}) is a shape without a dtype; content has to be a numpy array")
        if isinstance(wanted, Vector):
            shape = shape if values is not None else (*shape, wanted.room)
            wanted = wanted.component
        own_dtype = native(wanted)
        element = element_of(own_dtype)
        count = math.prod(shape) * element.parts
        if count >= 2**64:  # the binding would pass on what is left of it in 64 bits
            raise ValueError(f"the shape {shape} has more elements of {own_dtype} than can be counted")
        self._allocate(label, element.code, element.size, count)
        self.shape, self.dtype, self.label, self._element = shape, own_dtype, label, element
        if values is not None:
            self._assign(0, self.shape, values)

    def __repr__(self) -> str:
        return f"<tarva.Array {self.label!r} {self._describe()}>" if self.label else f"<tarva.Array {self._describe()}>"

    def _place(self) -> tuple[Array, int]:
        return self, 0

    def _assign(self, start: int, shape: Shape, value: Any) -> None:
        """Gives the elements of a range values of the host."""
        values = convert(np.asarray(value), self.dtype)
        element = self._element
        if values.ndim == 0 and element.parts == 1:
            return self._fill(start, math.prod(shape), values.tobytes())
        if values.shape == shape[len(shape) - values.ndim :] and values.ndim < len(shape):
            return self._repeat(start, math.prod(shape), values)
        try:
            values = np.broadcast_to(values, shape)
        except ValueError:
            raise ValueError(f"values of shape {values.shape} do not fill elements of shape {shape}") from None
        if values.size:
            self._write(start * element.parts, np.ascontiguousarray(values).reshape(-1).view(np.uint8))

    def _repeat(self, start: int, count: int, values: NumpyArray) -> None:
        """Writes values once, and doubles them where they are until the range is full."""
        if count == 0:
            return
        self._assign(start, values.shape or (1,), values.reshape(values.shape or (1,)))
        begin, unit = start * self._element.parts, self._element.parts
        done = values.size * unit
        while done < count * unit:
            more = min(done, count * unit - done)
            self._copy(begin, self, begin + done, more)
            done += more

    def _copy_from(self, start: int, shape: Shape, source: Elements) -> None:
        """Copies elements that the library holds, wherever they are."""
        if source.dtype != self.dtype or source.shape != shape:
            raise ValueError(f"elements {source._describe()} are not copied to those of {self.dtype} and shape {shape}")
        array, first = source._place()
        unit = self._element.parts
        array._copy(first * unit, self, start * unit, math.prod(shape) * unit)


def _shape_of(content: Any) -> Shape | None:
    """The shape that is meant, or None for content."""
    sizes = content if isinstance(content, tuple) else (content,)
    if not all(isinstance(size, (int, np.integer)) and not isinstance(size, bool) for size in sizes):
        return None
    if any(size < 0 for size in sizes):
        raise ValueError(f"the shape {content!r} has a negative size")
    return tuple(int(size) for size in sizes)


def _values_of(content: Any) -> NumpyArray:
    if not isinstance(content, Elements) and not hasattr(content, "__array__"):
        raise TypeError(f"an Array is made of a numpy array, or of a shape and a dtype, not of {short_text(content)}")
    return np.asarray(content)


def short_text(value: Any) -> str:
    """A value as a message shows it."""
    text = repr(value)
    return text if len(text) < 60 else f"a {type(value).__name__}"

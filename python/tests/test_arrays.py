# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Arrays hold what numpy arrays hold, and their parts are those of numpy."""

from typing import Any

import numpy as np
import pytest

import tarva

pytestmark = pytest.mark.usefixtures("device")
RECORD = np.dtype([("whole", "i4"), ("part", "f8")], align=True)
GRID = np.arange(24, dtype=np.int32).reshape(4, 6)


@pytest.mark.parametrize(
    "content",
    [
        *(np.arange(7).astype(name) for name in "bBhHiIqQefd?FD"),
        np.arange(6, dtype=">i4"),
        GRID[:, ::2],
        np.array([b"text", b""]),
        np.array([(1, 2.5), (3, 4.5)], RECORD),
        np.array(5.0),
        np.zeros((3, 0)),
    ],
    ids=lambda content: f"{content.dtype}{content.shape}",
)
def test_content_goes_and_comes_back(content: Any) -> None:
    array = tarva.Array(content, label="content")
    assert array.shape == content.shape and array.nbytes == content.nbytes
    assert np.array_equal(np.asarray(array), content)
    if content.ndim == 1:
        array[2:4] = content[:2][: len(content[2:4])]
        content[2:4] = content[:2][: len(content[2:4])]
        copied = array.copy()
        array.fill(content[0])  # all kinds of elements can be repeated
        assert np.array_equal(np.asarray(copied), content)
        assert np.array_equal(np.asarray(array), np.full(len(content), content[0], content.dtype))


def test_shapes_and_vectors() -> None:
    array = tarva.Array((2, 3), tarva.float3)
    assert array.shape == (2, 3, 4) and array.dtype == np.float32 and not np.asarray(array).any()
    array.fill((1, 2, 3, 4))
    array[1, 1:] = 7
    expected = np.tile(np.array([1, 2, 3, 4], np.float32), (2, 3, 1))
    expected[1, 1:] = 7
    assert np.array_equal(array, expected)
    room = np.empty((2, 3, 4), np.float32)
    assert array.read(room) is room and np.array_equal(room, expected)
    assert tarva.Array(np.arange(2.0), np.float32).dtype == np.float32


@pytest.mark.parametrize(
    "key",
    [..., 1, -1, (1, 2), slice(1, 3), slice(2, 2), (2, slice(1, 4)), (slice(1, 2), slice(2, 4)), (0, ...)],
    ids=str,
)
def test_parts_are_those_of_numpy(key: Any) -> None:
    array, content = tarva.Array(GRID), GRID.copy()
    assert np.array_equal(np.asarray(array[key]), content[key])
    array[key] = content[key] * 2
    content[key] *= 2
    assert np.array_equal(array, content)


def test_parts_of_parts_and_copies_between_arrays() -> None:
    array = tarva.Array(GRID)
    part = array[1:3]
    part[1][2:4] = -1
    assert part[1, 2] == -1 and array[2, 3] == -1 and len(part) == 2
    other = tarva.Array(np.zeros((3, 6), np.int32))
    other[1:] = part
    assert np.array_equal(other, [[0] * 6, *np.asarray(array)[1:3]])
    assert list(other[0]) == [0] * 6


@pytest.mark.parametrize(
    ("do", "wanted", "text"),
    [
        (lambda a: a[:, 1], IndexError, "no single range"),
        (lambda a: a[::2], IndexError, "no single range"),
        (lambda a: tarva.Array(2**64 + 5, np.int8), ValueError, "than can be counted"),
        (lambda a: a[[1, 2]], IndexError, "whole numbers and slices"),
        (lambda a: a.__setitem__(0, 1.5), TypeError, "float64 is not converted to int32"),
        (lambda a: a.__setitem__(0, 2**40), ValueError, "not 1099511627776"),
        (lambda a: a.__setitem__(..., [1, 2]), ValueError, r"\(2,\) do not fill elements of shape \(4, 6\)"),
        (lambda a: a.__setitem__(0, a), ValueError, r"\(4, 6\) are not copied to"),
        (lambda a: a[0].__setitem__(slice(0, 3), a[0, 1:4]), tarva.LogicFailure, "overlap"),
        (lambda a: a.read(np.zeros(24)), ValueError, "float64"),
        (
            lambda a: np.array(a, copy=False) if int(np.__version__[0]) > 1 else a.__array__(copy=False),
            ValueError,
            "copy",
        ),
        (lambda a: tarva.Array((3, 4)), TypeError, "shape without a dtype"),
        (lambda a: tarva.Array([1.0, 2.0]), TypeError, "numpy array"),
        (lambda a: tarva.Array(-1, np.int8), ValueError, "negative"),
        (lambda a: tarva.Array(3, object), TypeError, "no elements of object"),
        (lambda a: tarva.Array(2**62, np.float64), tarva.LogicFailure, "4611686018427387904"),
    ],
)
def test_what_makes_no_sense_is_refused_and_changes_nothing(do: Any, wanted: type[Exception], text: str) -> None:
    array = tarva.Array(GRID)
    with pytest.raises(wanted, match=text):
        do(array)
    assert np.array_equal(array, GRID)

# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Launches, and the arguments that they take and refuse."""

import re
from typing import Any

import numpy as np
import pytest

import tarva
from tarva import Array, Local, Range

PAIR = np.dtype([("whole", "i4"), ("part", "f4")])
LEAST = [-(2**7), 0, -(2**15), 0, -(2**31), 0, -(2**63), 0]
MOST = [2**7 - 1, 2**8 - 1, 2**15 - 1, 2**16 - 1, 2**31 - 1, 2**32 - 1, 2**63 - 1, 2**63 - 1]
TYPES = [np.dtype(each) for each in "bBhHiIqQ"]


@pytest.fixture()
def kernels(program: tarva.Program) -> tarva.Program:
    program.saxpy.takes(np.float32, Array[np.float32], Array)
    program.integers.takes(*TYPES, Array)
    program.vectors.takes(tarva.float4, tarva.uchar2, tarva.float3, PAIR, Array)
    program.locals.takes(Array, Local(np.float32), np.int32, Local(np.int32))
    return program


def test_numbers_of_each_type(kernels: tarva.Program) -> None:
    out = Array(8, np.int64)
    rows: list[list[Any]] = [LEAST, MOST, [np.int16(5)] * 8, [True] * 8]
    for row in rows:
        kernels.integers(1, *row, out)
        assert [int(each) for each in out] == [int(each) for each in row]
    x, y = Array(np.full(4, 2, np.float32)), Array(np.ones(4, np.float32))
    for number in (3, 3.0, np.float64(3), np.uint8(3)):
        kernels.saxpy(4, number, x, y)
    assert np.array_equal(y, np.full(4, 25))


def test_vectors_structures_and_values_with_types(program: tarva.Program, kernels: tarva.Program) -> None:
    out = Array(4, np.float32)
    pair = np.array((5, 0.5), PAIR)
    for row in (
        ((1, 2, 3, 4), (250, 3), (1, 2, 3), pair),
        (4, 3, 3, (5, 0.5)),
        (4, np.array([1, 3], np.uint8), (1, 2, 3, 0), pair),
    ):
        kernels.vectors(1, *row, out)
        assert np.array_equal(out, [4, 3, 3, 5.5])
        out.fill(0)
    y = Array(np.ones(1, np.float32))
    untyped = program._make_kernel("saxpy")
    untyped(1, np.float32(2), y.copy(), y)
    assert y[0] == 3


@pytest.mark.parametrize(
    ("size", "keywords", "expected"),
    [
        (7, {}, [1, 7, 1, ..., 1, 0, 0]),
        ((6, 4), {"group": (3, 2), "offset": (5, 1)}, [2, 6, 4, 3, 2, 5, 1]),
        ((np.int64(6), 4, 1), {"group": None}, [3, 6, 4, ..., ..., 0, 0]),
        (Range.groups_of(2, 3, 4), {}, [2, 6, 8, 3, 4, 0, 0]),
        (Range.at_least(np.int64(2**20)), {}, [1, 2**20, 1, ..., 1, 0, 0]),
        (Range.groups(2), {}, [1, ..., 1, ..., 1, 0, 0]),
        (Range.groups_per_unit(1), {}, [1, ..., 1, ..., 1, 0, 0]),
        (Range.group_per_unit_of(2, 2), {}, [2, ..., ..., 2, 2, 0, 0]),
    ],
    ids=str,
)
def test_ranges(program: tarva.Program, size: Any, keywords: dict[str, Any], expected: list[Any]) -> None:
    out = Array(7, np.uint64)
    program.range(size, out, None, **keywords)
    told = [int(each) for each in out]
    assert told[0] == expected[0] + 10  # the pointer was null
    assert all(wanted is ... or wanted == found for wanted, found in zip(expected[1:], told[1:], strict=True))


def test_local_memory(kernels: tarva.Program) -> None:
    out = Array(8, np.float32)
    kernels.locals(8, out, 4, 100, 1, group=4)
    assert np.array_equal(out, [103, 102, 101, 100] * 2)
    kernels.locals(8, out, 10, group=4, local=(4, 1))
    kernels.locals(8, out, Local(np.float32, 4), 10, Local(tarva.int2, 1), group=4)
    assert np.array_equal(out, [13, 12, 11, 10] * 2)


F, I = Array[np.float32], np.zeros(1, np.int32)  # noqa: E741


@pytest.mark.parametrize(
    ("kernel", "size", "row", "keywords", "wanted", "text"),
    [
        ("saxpy", 1, ("x", 0, 0), {}, TypeError, "Parameter 0 (a) of kernel saxpy takes an np.float32, not 'x'"),
        ("saxpy", 1, (1e300, 0, 0), {}, ValueError, "(a) of kernel saxpy takes an np.float32, not 1e+300"),
        ("saxpy", 1, (3, 2, 0), {}, TypeError, "Parameter 1 (x) of kernel saxpy takes a tarva.Array[float32], not 2"),
        ("saxpy", 1, (3, I, 0), {}, TypeError, "Parameter 1 (x) of kernel saxpy takes no numpy array"),
        ("saxpy", 1, (3, "ints", 0), {}, TypeError, "saxpy takes a tarva.Array[float32], not <tarva.Array"),
        ("saxpy", 1, (3, "view", 0), {}, TypeError, "(x) of kernel saxpy takes whole Arrays"),
        ("saxpy", 3, ("floats", "floats"), {}, TypeError, "takes a range and then 3 arguments (a, x, y), not 2"),
        ("saxpy", 1, (3, "floats", "floats", 1), {}, TypeError, "3 arguments (a, x, y), not 4"),
        ("saxpy", (4, 4), (3, "floats", "floats"), {"group": 4}, ValueError, "(4, 4) has another number of dimensions"),
        ("saxpy", "4", (3, "floats", "floats"), {}, TypeError, "not '4'"),
        ("saxpy", -4, (3, "floats", "floats"), {}, ValueError, "not -4"),
        ("saxpy", (1, 1, 1, 1), (3, "floats", "floats"), {}, ValueError, "one to three"),
        ("saxpy", Range.groups(1), (3, "floats", "floats"), {"group": 4}, TypeError, "groups(1) has groups"),
        ("saxpy", 4, (3, "floats", "floats"), {"grop": 4}, TypeError, "not 'grop'"),
        ("saxpy", 4, (3, "floats", "floats"), {"local": 4}, TypeError, "not 3 and local=4"),
        (
            "saxpy",
            4,
            (3, "closed", "floats"),
            {},
            ValueError,
            "<tarva.Array 'gone' of float32 and shape (4,)> has been given",
        ),
        ("saxpy", 4, (3, "floats", "floats"), {"group": 2**40}, tarva.LogicFailure, "Local size (1099511627776)"),
        ("locals", 4, ("floats", -1, 1, 1), {}, ValueError, "Parameter 1 (row) of kernel locals"),
        ("locals", 4, ("floats", 1), {"local": 4}, TypeError, "not 2 and local=4"),
        ("vectors", 1, ((1, 2), 0, 0, 0, "floats"), {}, ValueError, "float4 has 4 components"),
        ("vectors", 1, (1, (1, 256), 0, 0, "floats"), {}, ValueError, "uint8 holds 0 to 255"),
        ("vectors", 1, (1, 1, 1, 5, "floats"), {}, TypeError, "Parameter 3 (d) of kernel vectors takes a structure"),
        ("range", 1, (3, None), {}, TypeError, "Parameter 0 (out) of kernel range is given 3, whose type is not known"),
        *(
            ("integers", 1, (*LEAST[:i], row[i] + step, *LEAST[i + 1 :], "ints"), {}, ValueError, f"Parameter {i} (")
            for row, step in ((LEAST, -1), (MOST, 2**63 + 1))
            for i in range(8)
        ),
    ],
)
def test_wrong_arguments_are_named(
    kernels: tarva.Program, kernel: str, size: Any, row: Any, keywords: Any, wanted: type[Exception], text: str
) -> None:
    floats, closed = Array(4, np.float32), Array(4, np.float32, label="gone")
    closed.close()
    known = {"floats": floats, "ints": Array(8, np.int32), "view": floats[1:3], "closed": closed}
    arguments = [known.get(each, each) if isinstance(each, str) else each for each in row]
    with pytest.raises(wanted, match=re.escape(text)):
        kernels[kernel](size, *arguments, **keywords)


@pytest.mark.parametrize(
    ("declared", "wanted", "text"),
    [
        ((np.float32,), ValueError, "has 3 parameters (a, x, y), not 1"),
        ((bool, Array, Array), TypeError, "no bool"),
        ((complex, Array, Array), TypeError, "no complex128"),
        (("nope", Array, Array), TypeError, "not 'nope'"),
        ((np.float32, Local, Array), TypeError, "local memory is declared with its type"),
        ((np.dtype("i4,i4,i4"), Array, Array), TypeError, "12 bytes is not passed by value: pad it"),
    ],
)
def test_wrong_declarations(program: tarva.Program, declared: Any, wanted: type[Exception], text: str) -> None:
    with pytest.raises(wanted, match=re.escape(text)):
        program.saxpy.takes(*declared)

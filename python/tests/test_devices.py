# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Devices, programs, and the answers to what goes wrong with them."""

import re
from typing import Any

import numpy as np
import pytest

import tarva
from conftest import run


def test_devices_and_their_properties(device: tarva.Device) -> None:
    found = tarva.devices()
    assert device in found and tarva.first_device() == found[0] and len({*found, *tarva.devices()}) == len(found)
    assert sum(len(tarva.devices(each)) for each in ("gpu", "accelerator", "cpu", "custom", "other")) == len(found)
    tree = device.properties
    for path in ("OPENCL/CL_DEVICE_NAME", "CL_DEVICE_NAME"):
        assert tree[path] == tree["OPENCL"]["CL_DEVICE_NAME"] == device.name
    kinds = {"CL_DEVICE_MAX_COMPUTE_UNITS": int, "CL_DEVICE_AVAILABLE": bool, "CL_DEVICE_EXTENSIONS": tuple}
    assert [type(tree[name]) for name in kinds] == list(kinds.values())
    assert set(tree) >= {"NAME", "OPENCL"} and tree.as_dict()["OPENCL"]["CL_DEVICE_NAME"] == device.name
    assert "NOPE" not in tree and "name" in tree.describe("NAME") and device.name in str(tree)


def test_programs(device: tarva.Device, program: tarva.Program) -> None:
    assert {"saxpy", "range"} <= set(program.kernels) <= set(dir(program))
    assert program.saxpy is program["saxpy"] and not hasattr(program, "nope")
    again = device.load(program.binary, label="again")
    y = tarva.Array(np.ones(4, np.float32))
    kernel = again.saxpy.takes(np.float32, tarva.Array, tarva.Array)
    again.close()
    kernel(4, 2, y.copy(), y)  # a kernel keeps its program
    assert np.array_equal(y, [3] * 4) and again.closed
    assert isinstance(device.builtin_program.kernels, tuple) and device.supports("source")


@pytest.mark.parametrize(
    ("do", "wanted", "texts"),
    [
        (
            lambda d: d.build("kernel void f(", label='my "file".cl'),
            tarva.BuildError,
            ['my "file".cl:1:15', "does not build"],
        ),
        (lambda d: d.build("nonsense", "-DSIZE=3"), tarva.BuildError, ["with the options -DSIZE=3", "name of a file"]),
        (lambda d: d.build("", "-no-such-option"), tarva.Error, ["-no-such-option"]),
        (lambda d: d.build("kernel void here() {}").there, tarva.KernelNotFound, ["no kernel there", "it has: here"]),
        (lambda d: d.load(b"no program"), tarva.RuntimeFailure, ["given as binary"]),
        (lambda d: d.load(b"", kind="wasm"), ValueError, ["'wasm'", "spir-v"]),
        (lambda d: d.load(b"", kind="spir-v", constants={1: 2}), TypeError, ["np.int32"]),
        (lambda d: tarva.devices("gpus"), ValueError, ["'gpus'", "accelerator"]),
        (lambda d: d.build(b"bytes"), TypeError, ["not bytes"]),
        (lambda d: d.load("text"), TypeError, ["not str"]),
    ],
)
def test_answers_name_what_is_wrong(device: tarva.Device, do: Any, wanted: Any, texts: list[str]) -> None:
    with pytest.raises(wanted) as caught:
        do(device)
    assert all(text in str(caught.value) for text in texts)
    if isinstance(caught.value, tarva.BuildError):
        assert caught.value.log in str(caught.value) and caught.value.log
        assert wanted(*caught.value.args).args == caught.value.args  # as when it comes from another process


def test_failures_have_chains(program: tarva.Program) -> None:
    with pytest.raises(tarva.LogicFailure) as caught:
        program.saxpy(1, np.float32(1), tarva.Array(1, np.float32), None, group=2**40)
    assert caught.value.code == -3 and isinstance(caught.value, ValueError)
    assert caught.value.chain[0].kind in tarva.FailureKind and caught.value.chain[0].message in str(caught.value)


def test_what_is_given_up_says_so(device: tarva.Device, program: tarva.Program) -> None:
    with tarva.first_device() as other, program, program.saxpy as kernel, tarva.Array(
        3, np.int8, label="mine"
    ) as array:
        view = array[1:]
    for do in (lambda: other.build(""), lambda: program.properties, lambda: kernel(1), view.read, array.copy):
        with pytest.raises(ValueError, match=r"^<tarva\.(Device|Program|Kernel|Array).*> has been given up\.$"):
            do()
    array.close()


@pytest.mark.parametrize(
    ("wanted", "status", "text"),
    [
        ("0", 0, "is device 0"),
        ("cpu", 0, "is device"),
        ("PTHREAD", 0, "is device"),
        ("99", 1, r"TARVA_DEVICE is 99, .* There are: 0 \(.*cpu, OpenCL \d"),
        ("nonsense", 1, "TARVA_DEVICE is nonsense"),
    ],
)
def test_choosing_a_device(device: tarva.Device, wanted: str, status: int, text: str) -> None:
    if "pthread" not in device.name:
        pytest.skip("the device is another one")
    done = run("import sys, tarva.__main__ as m; sys.exit(m.main())", TARVA_DEVICE=wanted)
    assert done.returncode == status and re.search(text, done.stdout + done.stderr)


def test_no_device_says_what_to_install() -> None:
    done = run("import tarva; tarva.best_device()", OCL_ICD_VENDORS="/nowhere")
    assert done.returncode == 1 and "NoDevice" in done.stderr and "pocl-opencl-icd" in done.stderr

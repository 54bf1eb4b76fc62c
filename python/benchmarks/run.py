#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What a launch from Python costs beyond one from C, and what the import costs beyond numpy's.

    run.py <build folder> [--publish]

Everything is measured in turns, in one run, on one processor; what is told are medians of the rounds. With --publish
the table on the page docs/python.md is renewed. The build folder has the target python_launch_in_c.
"""

import json
import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path
from typing import Any

ROUNDS, LAUNCHES, STARTS = 15, 5000, 30
SOURCE = "kernel void three(float a, global float* x, global float* y) {}"
PAGE = Path(__file__).resolve().parents[2] / "docs" / "python.md"


def time_of(launch: Any) -> float:
    """Nanoseconds of a launch."""
    for _ in range(LAUNCHES // 10):
        launch()
    begin = time.perf_counter_ns()
    for _ in range(LAUNCHES):
        launch()
    return (time.perf_counter_ns() - begin) / LAUNCHES


def package() -> dict[str, float]:
    import numpy as np

    import tarva

    program = tarva.first_device().build(SOURCE)
    x = tarva.Array(1000, np.float32)
    untyped, typed = program._make_kernel("three"), program.three.takes(np.float32, tarva.Array, tarva.Array)
    number = np.float32(3)
    return {
        "the package, prepared by takes(...)": time_of(lambda: typed(1, 3, x, x)),
        "the package, unprepared": time_of(lambda: untyped(1, number, x, x)),
    }


def through_ctypes(library: str) -> dict[str, float]:
    """The same by ctypes, with no more checks than C has, and the arguments put together at each launch."""
    import ctypes as c

    class Argument(c.Structure):
        _fields_ = [("kind", c.c_uint64), ("first", c.c_uint64), ("second", c.c_uint64)]

    class Range(c.Structure):
        _fields_ = [("type", c.c_uint64), ("words", c.c_uint64 * 10)]

    class Devices(c.Structure):
        _fields_ = [("count", c.c_uint64), ("devices", c.POINTER(c.c_void_p))]

    class Built(c.Structure):
        _fields_ = [("program", c.c_void_p), ("log", c.c_char_p), ("success", c.c_uint64)]

    tarva = c.CDLL(library)
    error, kernel, memory = c.c_void_p(), c.c_void_p(), c.c_void_p()
    devices, built = c.POINTER(Devices)(), c.POINTER(Built)()
    tarva.tarva_abi_get_devices(None, c.byref(devices), c.byref(error))
    tarva.tarva_abi_load_device_ir(
        None, c.c_void_p(devices[0].devices[0]), None, c.c_uint64(1), SOURCE.encode(), c.c_uint64(len(SOURCE)),
        b"", b"", c.byref(built), c.byref(error),
    )  # fmt: skip
    tarva.tarva_abi_get_kernel(None, c.c_void_p(built[0].program), b"three", c.byref(kernel), c.byref(error))
    tarva.tarva_abi_memory_allocate_typed(None, b"", c.c_uint64(12), c.c_uint64(1000), c.byref(memory), c.byref(error))
    call = tarva.tarva_abi_kernel_call
    call.restype = c.c_int64
    call.argtypes = [c.c_void_p, c.c_void_p, c.c_void_p, c.c_uint64, c.c_void_p, c.c_void_p]

    def launch(size: int, number: float, x: Any, y: Any) -> None:
        value = c.c_float(number)
        arguments = (Argument * 3)((1, 12, c.addressof(value)), (2, x.value, 0), (2, y.value, 0))
        extent = Range(1, (c.c_uint64 * 10)(1, 0, 0, 0, size))
        if call(None, kernel, arguments, 3, c.byref(extent), c.byref(error)) != 0:
            raise RuntimeError("the launch has failed")

    return {"ctypes": time_of(lambda: launch(1, 3, memory, memory))}


def one_round(build: Path) -> dict[str, float]:
    """Each subject in a process of its own, as a program would have it."""

    def run(*command: str) -> str:
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    times = {"C": float(run(str(build / "python" / "python_launch_in_c"), str(LAUNCHES)))}
    for subject in ("package", "ctypes"):
        times.update(json.loads(run(sys.executable, __file__, str(build), subject)))
    return times


def start_of(code: str) -> float:
    """Milliseconds that a fresh interpreter needs for this: of the processor, since others may be busy on it, too."""
    child = os.posix_spawn(sys.executable, [sys.executable, "-c", code], os.environ)
    _, status, used = os.wait4(child, 0)
    if status != 0:
        raise RuntimeError(f"{code} has failed")
    return (used.ru_utime + used.ru_stime) * 1e3


def table(launches: list[dict[str, float]], starts: dict[str, list[float]]) -> str:
    def median(values: Any) -> float:
        return statistics.median(values)

    lines = ["| a launch with three arguments | time | beyond C |", "|---|---:|---:|"]
    for name in launches[0]:
        beyond = median(each[name] - each["C"] for each in launches) / 1e3
        lines.append(f"| {name} | {median(each[name] for each in launches) / 1e3:.2f} us | {beyond:.2f} us |")
    lines += ["", "| a fresh interpreter | processor time | beyond numpy |", "|---|---:|---:|"]
    for name, times in starts.items():
        beyond = median(a - b for a, b in zip(times, starts["import numpy"], strict=True))
        lines.append(f"| `{name}` | {median(times):.0f} ms | {beyond:.1f} ms |")
    return "\n".join(lines)


def main() -> None:
    build = Path(sys.argv[1]).resolve()
    if sys.argv[2:] == ["package"]:
        print(json.dumps(package()))
        return
    if sys.argv[2:] == ["ctypes"]:
        print(json.dumps(through_ctypes(str(build / "liboryn-tarva.so.0"))))
        return
    os.environ["PYTHONPATH"] = str(build / "python")
    os.environ.setdefault("POCL_DEVICES", "basic")
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    launches = [one_round(build) for _ in range(ROUNDS)]
    codes = ("import numpy", "import tarva", "import tarva; tarva.best_device()")
    starts: dict[str, list[float]] = {code: [] for code in codes}
    for _ in range(STARTS):
        for code in codes:
            starts[code].append(start_of(code))
    result = table(launches, starts)
    print(result)
    if "--publish" in sys.argv:
        marks = r"(<!-- measured in Python -->\n)(.*?)(<!-- end of measured -->)"
        text = re.sub(marks, lambda found: found[1] + result + "\n" + found[3], PAGE.read_text(), flags=re.S)
        PAGE.write_text(text)


if __name__ == "__main__":
    main()

# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What becomes of handles, threads and processes."""

import threading
import time

import numpy as np
import pytest

import tarva
from conftest import run

pytestmark = pytest.mark.usefixtures("device")
USE = """
import gc, os, numpy as np, tarva
program = tarva.best_device().build("kernel void f(global int* x) { x[get_global_id(0)] = 1; }")
array = tarva.Array(4, np.int32)
program.f.takes(tarva.Array)(4, array)
assert array[3] == 1
"""


@pytest.mark.parametrize(
    "code",
    [
        "",
        "del array, program",
        "cycle = [array, program]; cycle.append(cycle); del array, program, cycle; gc.collect()",
        "try:\n  tarva.Array(np.zeros(3)).read(np.zeros(1))\nexcept ValueError: pass",
        "try:\n  program.nope\nexcept tarva.KernelNotFound: pass",
        "import threading; [threading.Thread(target=array.copy).start() for _ in range(4)]",
    ],
)
def test_every_handle_is_given_up(code: str) -> None:
    done = run(USE + code, TARVA_LOG_LEVEL="warn", TARVA_LOG_TARGET="console")
    assert (done.returncode, done.stderr) == (0, "")


def test_a_forked_child_is_told() -> None:
    code = """
child = os.fork()
if child == 0:
    try:
        array.read()
    except tarva.ForkedProcess as told:
        os._exit(7 if "spawn" in str(told) else 8)
    os._exit(9)
assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 7
assert array[0] == 1
"""
    done = run(USE + code)
    assert done.returncode == 0, done.stderr
    before = "import os, sys\nimport tarva\nif os.fork() == 0:\n  " + USE.strip().replace("\n", "\n  ")
    done = run(before + "\nelse:\n  sys.exit(os.waitstatus_to_exitcode(os.wait()[1]))")
    assert done.returncode == 0, done.stderr


def test_other_threads_run_on_and_cannot_give_up_what_is_used(device: tarva.Device) -> None:
    program = device.build("kernel void slow(global uint* x, uint n) { while (n--) x[0] = x[0] * 5 + 1; }")
    slow = program.slow.takes(tarva.Array, np.uint32)
    array = tarva.Array(np.ones(1, np.uint32), label="used")
    loops = 10_000
    while True:  # long enough, whatever the machine
        begin = time.perf_counter()
        slow(1, array, loops)
        if time.perf_counter() - begin > 0.5:
            break
        loops *= 4
    launch = threading.Thread(target=slow, args=(1, array, loops))
    steps = 0
    launch.start()
    while launch.is_alive():
        array.close()  # waits for nobody, and takes nothing from under the launch
        time.sleep(0.001)  # comes back soon, or, if nobody lets this thread on, after the launch
        steps += 1
    launch.join()
    assert array.closed and steps > 2


def test_threads_share_a_kernel(device: tarva.Device) -> None:
    add = device.build("kernel void add(global int* x, int n) { x[get_global_id(0)] += n; }").add
    add.takes(tarva.Array, np.int32)
    arrays = [tarva.Array(np.zeros(100, np.int32)) for _ in range(4)]

    def work(array: tarva.Array) -> None:
        for _ in range(200):
            add(100, array, 1)

    threads = [threading.Thread(target=work, args=(each,)) for each in arrays]
    for each in threads:
        each.start()
    for each in threads:
        each.join()
    assert all(np.array_equal(each, np.full(100, 200)) for each in arrays)

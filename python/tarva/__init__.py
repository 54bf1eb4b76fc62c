# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""TARVA: one plain interface to all OpenCL devices of a machine.

    import numpy as np, tarva

    program = tarva.best_device().build('''
        kernel void saxpy(float a, global const float* x, global float* y) {
          y[get_global_id(0)] += a * x[get_global_id(0)];
        }''')
    saxpy = program.saxpy.takes(np.float32, tarva.Array, tarva.Array)
    x, y = tarva.Array(np.full(1000, 2, np.float32)), tarva.Array(np.ones(1000, np.float32))
    saxpy(1000, 3, x, y)
    print(np.asarray(y))

Arrays belong to no device: the library moves them to where they are used. A call returns when its work has ended; one
operation runs at a time, and other threads of Python run on meanwhile. Whatever is not needed any more is given up by
itself, or by close() and `with`.
"""

from typing import TYPE_CHECKING

from . import _binding, _types
from ._array import Array, View
from ._device import Device, best_device, devices, first_device
from ._errors import (
    BuildError,
    Error,
    Failure,
    FailureKind,
    ForkedProcess,
    KernelNotFound,
    LogicFailure,
    NoDevice,
    OutOfMemory,
    RuntimeFailure,
    UnknownFailure,
)
from ._kernel import Kernel, Local, Range
from ._program import Program
from ._properties import Properties
from ._types import Vector

__version__ = _binding.version

# The vector types of OpenCL: float4, uchar16 and so on.
globals().update(_types.VECTORS)
if TYPE_CHECKING:

    def __getattr__(name: str) -> Vector:
        ...


__all__ = [
    "Array",
    "BuildError",
    "Device",
    "Error",
    "Failure",
    "FailureKind",
    "ForkedProcess",
    "Kernel",
    "KernelNotFound",
    "Local",
    "LogicFailure",
    "NoDevice",
    "OutOfMemory",
    "Program",
    "Properties",
    "Range",
    "RuntimeFailure",
    "UnknownFailure",
    "Vector",
    "View",
    "best_device",
    "devices",
    "first_device",
    *_types.VECTORS,
]

# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Lists the devices of the machine: python -m tarva. The status is 1 if there is none."""

import sys

from . import Error, NoDevice, best_device, devices
from ._device import Device, _read

_HEADS = ("Device", "OpenCL", "Name", "Type", "Units", "Memory")


def _row(index: int, device: Device) -> tuple[str, ...]:
    memory = _read(device, "CL_DEVICE_GLOBAL_MEM_SIZE", None)
    return (
        str(index),
        device.version,
        device.name,
        device.type.upper(),
        str(_read(device, "CL_DEVICE_MAX_COMPUTE_UNITS", "?")),
        "?" if memory is None else f"{memory / 2**30:.2f} GiB",
    )


def main() -> int:
    """Prints a line for each device, and which is the best one."""
    try:
        best = best_device()
    except (NoDevice, Error) as failure:
        print(failure, file=sys.stderr)
        return 1
    found = devices()
    rows = [_HEADS, *(_row(index, device) for index, device in enumerate(found))]
    widths = [max(len(row[column]) for row in rows) for column in range(len(_HEADS))]
    for row in rows:
        print("  ".join(text.ljust(width) for text, width in zip(row, widths, strict=True)).rstrip())
    print(f"tarva.best_device() is device {found.index(best)}.")
    return 0


if __name__ == "__main__":
    sys.exit(main())

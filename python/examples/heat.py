# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""How heat spreads in a plate, with a progress bar:   python3 heat.py [picture.png]"""

import sys

import numpy as np

import picture
import tarva

SOURCE = """
/* No heat crosses the edges: beyond them the plate is as warm as at the edge itself. */
kernel void spread(float rate, global const float* now, global float* next) {
  const int x = get_global_id(0), y = get_global_id(1), columns = get_global_size(0), rows = get_global_size(1);
  const float here = now[y * columns + x];
  const float left = now[y * columns + max(x - 1, 0)], right = now[y * columns + min(x + 1, columns - 1)];
  const float above = now[max(y - 1, 0) * columns + x], below = now[min(y + 1, rows - 1) * columns + x];
  next[y * columns + x] = here + rate * (left + right + above + below - 4 * here);
}
"""


def show_progress(done: int, of: int) -> None:
    filled = 40 * done // of
    print(f"\r[{'#' * filled}{'.' * (40 - filled)}] {done} of {of} steps", end="\n" * (done == of), file=sys.stderr)


def main() -> None:
    chosen = picture.arguments("How heat spreads in a plate.")
    size, steps = (64, 100) if chosen.quick else (512, 4000)
    plate = np.zeros((size, size), np.float32)
    for x, y, heat in ((0.3, 0.3, 1.0), (0.7, 0.4, 0.8), (0.45, 0.75, 0.6)):
        column, row, half = int(x * size), int(y * size), size // 12
        plate[row - half : row + half, column - half : column + half] = heat

    device = tarva.best_device()
    spread = device.build(SOURCE, label="heat.cl").spread.takes(np.float32, tarva.Array, tarva.Array)
    now, then = tarva.Array(plate), tarva.Array(plate.shape, plate.dtype)
    for step in range(1, steps + 1):
        spread((size, size), 0.2, now, then)
        now, then = then, now
        if step % (steps // 20) == 0:
            show_progress(step, steps)

    content = np.asarray(now)
    assert abs(content.sum() / plate.sum() - 1) < 1e-3, "no heat is lost"
    assert content.max() < plate.max(), "and none stays where it was"
    shades = content / content.max()
    picture.write_png(chosen.picture, picture.coloured(shades, (0, 0, 30), (120, 0, 90), (255, 90, 0), (255, 255, 200)))
    print(f"{device.name} has made {chosen.picture}.")


if __name__ == "__main__":
    main()

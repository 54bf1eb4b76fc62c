# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""A picture of the Mandelbrot set:   python3 mandelbrot.py [picture.png]"""

import numpy as np

import picture
import tarva

SOURCE = """
kernel void escape(float2 centre, float width, int limit, global float* steps) {
  const int x = get_global_id(0), y = get_global_id(1), columns = get_global_size(0), rows = get_global_size(1);
  const float scale = width / columns;
  const float2 c = centre + scale * (float2)(x - columns / 2, y - rows / 2);
  float2 z = 0;
  int n = 0;
  for (; n < limit && dot(z, z) < 256; ++n)
    z = (float2)(z.x * z.x - z.y * z.y, 2 * z.x * z.y) + c;
  /* The fraction makes the colours run into each other. */
  steps[y * columns + x] = n == limit ? 0 : n + 1 - log2(log2(dot(z, z)) / 2);
}
"""


def main() -> None:
    chosen = picture.arguments("A picture of the Mandelbrot set.")
    columns, rows = (96, 64) if chosen.quick else (960, 640)
    device = tarva.best_device()
    escape = device.build(SOURCE, label="mandelbrot.cl").escape.takes(tarva.float2, np.float32, np.int32, tarva.Array)

    steps = tarva.Array((rows, columns), np.float32)
    escape((columns, rows), (-0.7436, 0.1319), 0.02, 1000, steps)

    content = np.asarray(steps)
    assert 0.05 < np.mean(content == 0) < 0.95, "the picture has an inside and an outside"
    shades = np.log1p(content) / np.log1p(content.max())
    picture.write_png(
        chosen.picture,
        picture.coloured(shades, (0, 0, 0), (0, 7, 60), (30, 80, 160), (237, 255, 255), (255, 170, 0), (90, 20, 0)),
    )
    print(f"{device.name} has made {chosen.picture}.")


if __name__ == "__main__":
    main()

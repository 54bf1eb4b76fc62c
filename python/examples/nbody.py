# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Bodies under their own gravity, and the ways that they go:   python3 nbody.py [picture.png]"""

from typing import Any

import numpy as np

import picture
import tarva

SOURCE = """
/* The fourth component of a body is its mass. Work-groups share what they read in local memory. */
kernel void accelerate(global const float4* bodies, global float4* speeds, float step, local float4* tile) {
  const float4 self = bodies[get_global_id(0)];
  float4 pull = 0;
  for (size_t first = 0; first < get_global_size(0); first += get_local_size(0)) {
    tile[get_local_id(0)] = bodies[first + get_local_id(0)];
    barrier(CLK_LOCAL_MEM_FENCE);
    for (size_t i = 0; i < get_local_size(0); ++i) {
      const float4 way = (float4)(tile[i].xyz - self.xyz, 0);
      const float distance2 = dot(way, way) + 0.001f; /* softened, so that close bodies do not fly apart */
      pull += way * (tile[i].w / (distance2 * sqrt(distance2)));
    }
    barrier(CLK_LOCAL_MEM_FENCE);
  }
  speeds[get_global_id(0)] += pull * step;
}
kernel void move(global float4* bodies, global const float4* speeds, float step) {
  bodies[get_global_id(0)] += speeds[get_global_id(0)] * step;
}
"""
GROUP = 64


def galaxy(count: int, centre: tuple[float, float], drift: tuple[float, float]) -> tuple[Any, Any]:
    """A disc that turns about its centre."""
    part = (np.arange(count) + 1) / count
    angle, radius = 2.39996 * np.arange(count), 0.5 * np.sqrt(part)
    speed = np.sqrt(0.5 * part / (radius + 0.05))
    bodies, speeds = np.zeros((count, 4), np.float32), np.zeros((count, 4), np.float32)
    bodies[:, 0], bodies[:, 1] = centre[0] + radius * np.cos(angle), centre[1] + radius * np.sin(angle)
    bodies[:, 3] = 0.5 / count
    speeds[:, 0], speeds[:, 1] = drift[0] - speed * np.sin(angle), drift[1] + speed * np.cos(angle)
    return bodies, speeds


def main() -> None:
    chosen = picture.arguments("Two galaxies that meet.")
    count, steps, size = (256, 20, 64) if chosen.quick else (2048, 400, 640)
    pair = galaxy(count // 2, (-0.7, -0.3), (0.45, 0.1)), galaxy(count // 2, (0.7, 0.3), (-0.45, -0.1))
    bodies, speeds = (tarva.Array(np.concatenate(each)) for each in zip(*pair, strict=True))

    device = tarva.best_device()
    program = device.build(SOURCE, label="nbody.cl")
    accelerate = program.accelerate.takes(tarva.Array, tarva.Array, np.float32, tarva.Local(tarva.float4))
    move = program.move.takes(tarva.Array, tarva.Array, np.float32)
    momentum = np.asarray(speeds).sum(axis=0)
    light = np.zeros((size, size))
    for step in range(steps):
        accelerate(count, bodies, speeds, 0.005, group=GROUP, local=GROUP)
        move(count, bodies, speeds, 0.005)
        if step >= steps // 2:  # the ways, brighter towards the end
            x, y = ((np.asarray(bodies)[:, :2] / 1.6 + 1) / 2 * size).astype(int).T
            seen = (x >= 0) & (x < size) & (y >= 0) & (y < size)
            np.add.at(light, (y[seen], x[seen]), (step / steps) ** 4)

    assert np.allclose(np.asarray(speeds).sum(axis=0), momentum, atol=0.01 * count), "what pulls is pulled as much"
    shades = np.clip(np.log1p(light) / np.log1p(np.quantile(light, 0.999)), 0, 1)
    picture.write_png(
        chosen.picture, picture.coloured(shades, (4, 4, 16), (60, 40, 140), (250, 150, 90), (255, 255, 240))
    )
    print(f"{device.name} has made {chosen.picture}.")


if __name__ == "__main__":
    main()

/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#include "picture.h"
#include "report.h"
#include "work.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#define WIDTH 1200
#define HEIGHT 800
#define LIMIT 500

/* Left, top, and the step from one point to the next. */
#define LEFT (-2.25f)
#define TOP (-1.0f)
#define STEP 0.0025f

/* Without contraction each operation rounds as on the host. What may still differ are very small numbers,
 * which a device may take for 0, so that some points close to the border of the set can be let off. */
#define ALLOWED_DIFFERENCES (WIDTH * HEIGHT / 1000)

static const char source[] =
    "#pragma OPENCL FP_CONTRACT OFF\n"
    "kernel void mandelbrot(global uint* counts, float left, float top, float step, uint limit) {\n"
    "  const float re = left + step * (float)get_global_id(0);\n"
    "  const float im = top + step * (float)get_global_id(1);\n"
    "  float x = 0.0f, y = 0.0f;\n"
    "  uint count = 0;\n"
    "  while (count < limit && x * x + y * y <= 4.0f) {\n"
    "    const float next = x * x - y * y + re;\n"
    "    y = 2.0f * x * y + im;\n"
    "    x = next;\n"
    "    ++count;\n"
    "  }\n"
    "  counts[get_global_id(1) * get_global_size(0) + get_global_id(0)] = count;\n"
    "}\n";

static uint32_t count_iterations(float re, float im) {
  float x = 0.0f, y = 0.0f;
  uint32_t count = 0;
  while (count < LIMIT && x * x + y * y <= 4.0f) {
    const float next = x * x - y * y + re;
    y = 2.0f * x * y + im;
    x = next;
    ++count;
  }
  return count;
}

static uint32_t count_differences(const uint32_t* counts) {
  uint32_t differences = 0;
  for (uint32_t row = 0; row < HEIGHT; ++row)
    for (uint32_t column = 0; column < WIDTH; ++column)
      if (counts[row * WIDTH + column] !=
          count_iterations(LEFT + STEP * (float)column, TOP + STEP * (float)row))
        ++differences;
  return differences;
}

int run_mandelbrot(tarva_abi_device_s* device, const char* picture_path) {
  const uint64_t count = (uint64_t)WIDTH * HEIGHT;
  const float left = LEFT, top = TOP, step = STEP;
  const uint32_t limit = LIMIT;
  uint32_t* counts = allocate_or_stop(count * sizeof(uint32_t));
  printf("\nMandelbrot set, %d by %d points, at most %d iterations a point\n", WIDTH, HEIGHT, LIMIT);
  double time = now();

  tarva_abi_kernel_s* kernel = load_kernel(device, source, "", "mandelbrot");
  time = print_step("build the program", time);
  tarva_abi_memory_s* memory = allocate("counts", TARVA_ABI_TYPE_UINT32, count);
  /* A local size of zeros: the device chooses. */
  const tarva_abi_launch_range_s range = {TARVA_ABI_LAUNCH_EXPLICIT, {2, 0, 0, 0, WIDTH, HEIGHT, 1, 0, 0, 0}};
  const tarva_abi_kernel_argument_s arguments[] = {
      memory_argument(memory),
      value_argument(TARVA_ABI_TYPE_FLOAT, &left),
      value_argument(TARVA_ABI_TYPE_FLOAT, &top),
      value_argument(TARVA_ABI_TYPE_FLOAT, &step),
      value_argument(TARVA_ABI_TYPE_UINT32, &limit),
  };
  launch(kernel, arguments, 5, &range);
  time = print_step("allocate and launch", time);
  read_memory(memory, counts, count);
  time = print_step("read the counts", time);

  const uint32_t differences = count_differences(counts);
  time = print_step("compute and compare on the host", time);
  printf("  verified: %" PRIu32 " of %" PRIu64 " points differ (at most %d may)\n", differences, count,
         ALLOWED_DIFFERENCES);
  write_picture(picture_path, counts, WIDTH, HEIGHT, LIMIT);
  time = print_step("write the picture", time);
  printf("  the picture is in %s\n", picture_path);

  tarva_abi_release_memory(NULL, memory);
  tarva_abi_release_kernel(NULL, kernel);
  free(counts);
  return differences <= ALLOWED_DIFFERENCES;
}

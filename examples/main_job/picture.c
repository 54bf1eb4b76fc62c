/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

#include "picture.h"

#include "report.h"

#include <math.h>
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void colour(png_byte* pixel, uint32_t count, uint32_t limit) {
  if (count == limit) {
    memset(pixel, 0, 3);
    return;
  }
  const double place = log((double)count + 1.0) / log((double)limit + 1.0);
  pixel[0] = (png_byte)(255.0 * place * place);
  pixel[1] = (png_byte)(255.0 * place * place * place);
  pixel[2] = (png_byte)(60.0 + 195.0 * place);
}

void write_picture(const char* path, const uint32_t* counts, uint32_t width, uint32_t height,
                   uint32_t limit) {
  png_byte* pixels = allocate_or_stop((uint64_t)width * height * 3);
  for (size_t i = 0; i < (size_t)width * height; ++i)
    colour(pixels + 3 * i, counts[i], limit);

  png_image image;
  memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGB;
  if (!png_image_write_to_file(&image, path, 0, pixels, 0, NULL)) {
    fprintf(stderr, "Cannot write %s: %s\n", path, image.message);
    exit(1);
  }
  free(pixels);
}

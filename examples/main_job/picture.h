/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* Writing a picture of iteration counts. */
#ifndef MAIN_JOB_PICTURE_H
#define MAIN_JOB_PICTURE_H

#include <stdint.h>

/* Colours `width` times `height` iteration counts, row by row from the top, and writes them as a PNG to
 * `path`. A count of `limit` is drawn black. Prints what went wrong and ends the process with status 1 if it
 * cannot. */
void write_picture(const char* path, const uint32_t* counts, uint32_t width, uint32_t height, uint32_t limit);

#endif

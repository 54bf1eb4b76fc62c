/* SPDX-FileCopyrightText: 2026 TARVA developers */
/* SPDX-License-Identifier: MIT */

/* The main job: lists the OpenCL devices of the machine, then does real work on the first of them and checks
 * all of it against the host. Usage: main_job [picture.png] */
#include "report.h"
#include "work.h"

#include <stdio.h>

int main(int argc, char** argv) {
  const char* picture_path = argc > 1 ? argv[1] : "mandelbrot.png";
  tarva_abi_device_array_s* devices = NULL;
  tarva_abi_error_s* error = NULL;
  const double start = now();
  require(tarva_abi_get_devices(NULL, &devices, &error), error, "Listing the devices");
  print_step("start the library", start);
  if (devices->count == 0) {
    fprintf(stderr,
            "No OpenCL device was found. Install the OpenCL implementation of your hardware, or one that\n"
            "runs on the processor: apt-get install ocl-icd-libopencl1 pocl-opencl-icd\n");
    tarva_abi_free_device_array(NULL, devices);
    return 1;
  }
  print_devices(devices);

  tarva_abi_device_s* device = devices->devices[0];
  printf("\nAll work is done on device 0.\n");
  const int saxpy_right = run_saxpy(device);
  const int product_right = run_matrix_product(device);
  const int picture_right = run_mandelbrot(device, picture_path);
  const int right = saxpy_right && product_right && picture_right;
  printf("\n%s\n", right ? "All results were verified against the host." : "A result is WRONG, see above.");

  for (uint64_t i = 0; i < devices->count; ++i)
    tarva_abi_release_device(NULL, devices->devices[i]);
  tarva_abi_free_device_array(NULL, devices);
  return right ? 0 : 1;
}

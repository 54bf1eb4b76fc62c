#pragma once

#include "include/tarva_abi.h"

// What stands behind the opaque handles of the interface: one word, the object kind.

struct tarva_abi_device_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_program_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_kernel_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_memory_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_future_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_error_s {
  tarva_abi_object_kind kind;
};

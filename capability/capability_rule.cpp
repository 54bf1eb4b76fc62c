// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/capability_rule.h"

#include "capability/opencl_queries.h"

#include <array>

namespace qv {
namespace {

constexpr std::uint64_t all_bits = ~std::uint64_t{0};

// What a version demands of its devices and 3.0 leaves to them, as far as a query tells. A device has a feature if the
// masked number that it gives is at least `least`; for a feature told by bits mask and least are those bits.
struct mandatory_feature {
  opencl_version since;
  cl_device_info query;
  std::uint64_t mask;
  std::uint64_t least;
  bool for_images_only = false;
};

constexpr std::uint64_t svm_bits = CL_DEVICE_SVM_COARSE_GRAIN_BUFFER;
constexpr std::uint64_t atomic_bits = CL_DEVICE_ATOMIC_ORDER_RELAXED | CL_DEVICE_ATOMIC_ORDER_ACQ_REL |
                                      CL_DEVICE_ATOMIC_ORDER_SEQ_CST | CL_DEVICE_ATOMIC_SCOPE_WORK_GROUP |
                                      CL_DEVICE_ATOMIC_SCOPE_DEVICE;
constexpr std::uint64_t queue_bits = CL_DEVICE_QUEUE_SUPPORTED;
constexpr std::uint64_t default_queue_bits = CL_DEVICE_QUEUE_REPLACEABLE_DEFAULT;

constexpr std::array mandatory_features{
    mandatory_feature{{2, 0}, CL_DEVICE_DEVICE_ENQUEUE_CAPABILITIES, queue_bits, queue_bits},
    mandatory_feature{{2, 0}, CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_MAX_ON_DEVICE_QUEUES, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_SVM_CAPABILITIES, svm_bits, svm_bits},
    mandatory_feature{{2, 0}, CL_DEVICE_ATOMIC_MEMORY_CAPABILITIES, atomic_bits, atomic_bits},
    mandatory_feature{{2, 0}, CL_DEVICE_GENERIC_ADDRESS_SPACE_SUPPORT, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_NON_UNIFORM_WORK_GROUP_SUPPORT, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_WORK_GROUP_COLLECTIVE_FUNCTIONS_SUPPORT, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_PIPE_SUPPORT, all_bits, 1},
    mandatory_feature{{2, 0}, CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, all_bits, 65536},
    mandatory_feature{{2, 0}, CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS, all_bits, 64, true},
    mandatory_feature{{2, 0}, CL_DEVICE_IMAGE_PITCH_ALIGNMENT, all_bits, 1, true},
    mandatory_feature{{2, 1}, CL_DEVICE_DEVICE_ENQUEUE_CAPABILITIES, default_queue_bits, default_queue_bits},
    mandatory_feature{{2, 1}, CL_DEVICE_MAX_NUM_SUB_GROUPS, all_bits, 1},
};

std::uint64_t number_or_zero(const opencl_functions& cl, cl_device_id device, cl_device_info name) {
  return device_number(cl, device, name).value_or(0);
}

bool has_features_since(const opencl_functions& cl, cl_device_id device, opencl_version since) {
  const bool images = number_or_zero(cl, device, CL_DEVICE_IMAGE_SUPPORT) != 0;
  for (const mandatory_feature& feature : mandatory_features) {
    if (feature.since != since || (feature.for_images_only && !images))
      continue;
    if ((number_or_zero(cl, device, feature.query) & feature.mask) < feature.least)
      return false;
  }
  return true;
}

// The device lists the language, and the platform has the function that makes programs of it.
bool takes_spirv(const opencl_functions& cl, cl_device_id device) {
  return cl.create_program_with_il != nullptr &&
         device_text(cl, device, CL_DEVICE_IL_VERSION).value_or("").find("SPIR-V_1.") != std::string::npos;
}

} // namespace

std::uint32_t natural_capability(const opencl_functions& cl, cl_platform_id platform, cl_device_id device,
                                 opencl_version version) {
  if (version < opencl_version{3, 0})
    return capability_of_version(version);

  const bool has_spirv = takes_spirv(cl, device);
  // From 3.0 on a device that takes SPIR-V takes its constants, too. Neither needs the queues, pipes and shared memory that
  // 2.x demands besides, and good devices are without those; to hold SPIR-V back for them would help nobody.
  if (has_spirv && cl.set_program_specialization_constant != nullptr)
    return capability_of_version({2, 2});
  if (!has_features_since(cl, device, {2, 0}))
    return capability_of_version({1, 2});
  const bool is_of_2_1 = has_spirv && has_features_since(cl, device, {2, 1}) &&
                         platform_number(cl, platform, CL_PLATFORM_HOST_TIMER_RESOLUTION).value_or(0) != 0;
  return capability_of_version(is_of_2_1 ? opencl_version{2, 1} : opencl_version{2, 0});
}

bool has_device_queues(const opencl_functions& cl, cl_device_id device, opencl_version version) {
  return version >= opencl_version{2, 0} &&
         number_or_zero(cl, device, CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES) != 0 &&
         number_or_zero(cl, device, CL_DEVICE_MAX_ON_DEVICE_QUEUES) != 0;
}

} // namespace qv

#pragma once

#include "access/opencl/memory_object.h"

namespace oryn::skerv::opencl {

template <version V>
class buffer : public memory_object<V> {
public:
  using memory_object<V>::memory_object;
};

} // namespace oryn::skerv::opencl

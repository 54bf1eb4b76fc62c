#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <vector>

namespace oryn::tarva::library {

// What a copy between two blocks needs to know of one of them.
struct block_shape {
  data_type type;
  std::uint64_t size;
};

// The refusals of a copy in which a device takes part. Positions and counts are numbers of elements.
void check_device_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                       std::uint64_t destination_start, std::uint64_t count);

// The refusals of a copy between blocks of host memory.
void check_host_copy(const block_shape& source, std::uint64_t source_start, const block_shape& destination,
                     std::uint64_t destination_start, std::uint64_t count);

// The refusals of a fill, on the host and on a device alike.
void check_fill(const std::vector<std::uint8_t>& value, std::uint64_t start, std::uint64_t count,
                const block_shape& memory);

} // namespace oryn::tarva::library

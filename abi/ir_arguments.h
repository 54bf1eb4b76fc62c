#pragma once

#include "include/tarva_abi.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

class ir_header;

std::shared_ptr<const ir_header> make_ir_header(const tarva_abi_ir_header_s* header);

// The caller's description of a program, checked and copied in the order of the members.
struct ir_arguments {
  ir_arguments(const tarva_abi_ir_header_s* header_record, tarva_abi_ir_type ir_type, const void* ir_data,
               std::uint64_t data_size, const char* build_options);

  std::vector<std::uint8_t> data;
  std::string options;
  std::uint64_t type;
  std::shared_ptr<const ir_header> header;
};

} // namespace oryn::tarva::library

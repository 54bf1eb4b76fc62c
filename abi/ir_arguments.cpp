#include "abi/ir_arguments.h"

#include "abi/argument_checks.h"
#include "abi/bridge.h"
#include "objects/intermediate_representation.h"

#include <stdexcept>

namespace oryn::tarva::library {

namespace {

std::vector<std::uint8_t> copy_data(const void* data, std::uint64_t size) {
  if (!data || size == 0)
    return {};
  require_countable<std::uint8_t>(size, "bytes of data");
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

std::string copy_options(const char* options) {
  if (!options)
    throw std::logic_error("Attempting to make a string of the options, but the options argument is NULL.");
  return options;
}

std::shared_ptr<const ir_header> make_constant_array(const tarva_abi_ir_header_s& header) {
  if (!header.constants && header.count != 0)
    throw std::logic_error(
        "Attempting to read specialization constants, but the array of constants is NULL.");
  require_countable<spirv_specialization_constant>(header.count, "specialization constants");
  std::vector<spirv_specialization_constant> constants;
  constants.reserve(header.count);
  for (std::uint64_t index = 0; index < header.count; ++index) {
    const tarva_abi_specialization_constant_s& each = header.constants[index];
    constants.emplace_back(each.id, to_data_type(each.data_type), each.value);
  }
  return std::make_shared<spirv_specialization_constant_array>(std::move(constants));
}

} // namespace

std::shared_ptr<const ir_header> make_ir_header(const tarva_abi_ir_header_s* header) {
  if (!header || header->kind == TARVA_ABI_IR_HEADER_EMPTY)
    return std::make_shared<empty_ir_header>();
  if (header->kind == TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS)
    return make_constant_array(*header);
  throw std::logic_error("Unknown IR header type.");
}

ir_arguments::ir_arguments(const tarva_abi_ir_header_s* header_record, tarva_abi_ir_type ir_type,
                           const void* ir_data, std::uint64_t data_size, const char* build_options)
    : data(copy_data(ir_data, data_size)), options(copy_options(build_options)), type(to_ir_type(ir_type)),
      header(make_ir_header(header_record)) {}

} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs and kernels. A binary is "BIN:" or "BC" and a source text, an intermediate language "SPV:" and a
// source text; what counts of a text are its kernel declarations, and that "#error" fails its build.
#include "tests/scripted/scripted_machine.h"

#include <regex>
#include <sstream>

namespace scripted {

namespace {

std::vector<kernel_description> find_kernels(const std::string& text) {
  static const std::regex& declaration = *new const std::regex(
      R"(kernel\s+(?:__attribute__\s*\(\(\s*reqd_work_group_size\((\d+),\s*(\d+),\s*(\d+)\)\s*\)\)\s*)?void\s+(\w+)\s*\(([^)]*)\))");
  std::vector<kernel_description> found;
  for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end; ++match) {
    kernel_description kernel{(*match)[4].str(), {}, {}, {}};
    if ((*match)[1].matched)
      kernel.required_size = {std::stoul((*match)[1]), std::stoul((*match)[2]), std::stoul((*match)[3])};
    std::istringstream parameters((*match)[5].str());
    for (std::string one; std::getline(parameters, one, ',');) {
      kernel.parameters.push_back(one.find("local ") != std::string::npos ? argument_kind::local
                                  : one.find('*') != std::string::npos    ? argument_kind::memory
                                                                          : argument_kind::value);
      const std::size_t name = one.rfind(' '), first = one.find_first_not_of(' ');
      const std::size_t qualifier =
          one.find("al ") < name ? one.find("al ") + 3 : first; // "global ", "local "
      kernel.types.push_back(one.substr(qualifier, name - qualifier));
    }
    found.push_back(kernel);
  }
  return found;
}

program* make_program(session& now, void* context_handle, program::origin from, const std::string& text) {
  const auto made = std::make_shared<program>();
  made->from = from;
  made->text = text;
  now.log.text = text;
  now.world.add(now.world.find<context>(context_handle)->owner, made);
  return made.get();
}

std::int32_t create_with_source(session& now, qv::create_program_with_source_record& record) {
  if (record.count != 1 || record.lengths != nullptr || record.strings == nullptr)
    return invalid_value;
  record.result = make_program(now, record.context, program::origin::source, record.strings[0]);
  return 0;
}

std::int32_t create_with_binary(session& now, qv::create_program_with_binary_record& record) {
  if (record.num_devices != 1 || record.binary_status != nullptr || record.device_list[0] != &now.owner)
    return invalid_value;
  const std::string all(reinterpret_cast<const char*>(record.binaries[0]), record.lengths[0]);
  const std::size_t head = all.compare(0, 4, "BIN:") == 0 ? 4 : all.compare(0, 2, "BC") == 0 ? 2 : 0;
  if (head == 0)
    return -42; // CL_INVALID_BINARY
  record.result = make_program(now, record.context, program::origin::binary, all.substr(head));
  return 0;
}

std::int32_t make_from_il(session& now, void* context, const void* il, std::size_t length, void** result) {
  if (il == nullptr)
    return invalid_value;
  const std::string all(static_cast<const char*>(il), length);
  if (all.compare(0, 4, "SPV:") != 0)
    return invalid_value;
  program* const made = make_program(now, context, program::origin::il, all.substr(4));
  made->il = all;
  *result = made;
  return 0;
}

std::int32_t create_with_il(session& now, qv::create_program_with_il_record& record) {
  return make_from_il(now, record.context, record.il, record.length, &record.result);
}

// clCreateProgramWithILKHR: called at its address, so there is no call handle.
void* create_with_il_khr(void* context_handle, const void* il, std::size_t length, std::int32_t* status) {
  const visit inside;
  machine& world = machine::get();
  std::unique_lock lock(world.lock);
  call_record log{qv::operation::create_program_with_il};
  session now{world, *world.find<context>(context_handle)->owner, lock, log};
  void* result = nullptr;
  *status = make_from_il(now, context_handle, il, length, &result);
  return result;
}

std::int32_t get_extension_address(session& now,
                                   qv::get_extension_function_address_for_platform_record& record) {
  now.log.text = record.func_name;
  record.result =
      now.log.text == "clCreateProgramWithILKHR" ? reinterpret_cast<void*>(&create_with_il_khr) : nullptr;
  return 0;
}

std::int32_t create_with_builtin(session& now, qv::create_program_with_builtin_kernels_record& record) {
  if (record.num_devices != 1 || record.device_list == nullptr || record.device_list[0] != &now.owner)
    return invalid_value;
  program* const made = make_program(now, record.context, program::origin::builtin, record.kernel_names);
  made->build_status = 0;
  std::istringstream list(made->text);
  for (std::string name; std::getline(list, name, ';');)
    made->kernels.push_back({name, {argument_kind::memory}, {"void*"}, {}});
  record.result = made;
  return 0;
}

std::int32_t build(session& now, qv::build_program_record& record) {
  const auto found = now.world.find<program>(record.program);
  now.log.text = record.options == nullptr ? "" : record.options;
  if (record.num_devices != 1 || record.device_list == nullptr || record.device_list[0] != found->owner ||
      record.pfn_notify != nullptr)
    return invalid_value;
  if (now.log.text.find("-bad") != std::string::npos)
    return -43; // CL_INVALID_BUILD_OPTIONS
  const bool broken = found->text.find("#error") != std::string::npos;
  found->build_status = broken ? -2 : 0;
  found->log = broken ? "error: the text says #error" : now.log.text;
  if (!broken)
    found->kernels = find_kernels(found->text);
  return broken ? -11 : 0;
}

void* make_kernel(session& now, const std::shared_ptr<program>& from, const kernel_description& which) {
  const auto made = std::make_shared<kernel>();
  made->parent = from;
  made->description = which;
  made->arguments.resize(which.parameters.size());
  made->buffers.resize(which.parameters.size());
  return now.world.add(from->owner, made);
}

std::int32_t create_kernel(session& now, qv::create_kernel_record& record) {
  const auto found = now.world.find<program>(record.program);
  now.log.text = record.kernel_name;
  if (found->build_status != 0)
    return -45; // CL_INVALID_PROGRAM_EXECUTABLE
  const auto which =
      std::find_if(found->kernels.begin(), found->kernels.end(),
                   [&](const kernel_description& candidate) { return candidate.name == now.log.text; });
  if (which == found->kernels.end())
    return -46; // CL_INVALID_KERNEL_NAME
  record.result = make_kernel(now, found, *which);
  return 0;
}

std::int32_t create_kernels(session& now, qv::create_kernels_in_program_record& record) {
  const auto found = now.world.find<program>(record.program);
  if (record.num_kernels_ret != nullptr)
    *record.num_kernels_ret = static_cast<std::uint32_t>(found->kernels.size());
  if (record.kernels != nullptr)
    for (std::size_t i = 0; i < found->kernels.size() && i < record.num_kernels; ++i)
      record.kernels[i] = make_kernel(now, found, found->kernels[i]);
  return 0;
}

std::string kernel_names(const program& of) {
  std::string names;
  for (const kernel_description& one : of.kernels)
    names += (names.empty() ? "" : ";") + one.name;
  return names;
}

// By parameter; what the test has set comes first.
template <class Record>
std::int32_t answer_by(session& now, const Record& record,
                       std::initializer_list<std::pair<std::uint32_t, bytes>> answers) {
  if (const auto own = own_answer(now.owner, record.param_name))
    return answer_query(*own, record);
  for (const auto& [parameter, answer] : answers)
    if (parameter == record.param_name)
      return answer_query(answer, record);
  return invalid_value;
}

std::int32_t get_program_info(session& now, qv::get_object_info_record& record) {
  const auto found = now.world.find<program>(record.object);
  const std::string binary = "BIN:" + found->text;
  constexpr std::uint32_t binaries = 0x1166; // the value is an array of addresses
  if (record.param_name == binaries && record.param_value != nullptr) {
    std::memcpy(*static_cast<void**>(record.param_value), binary.data(), binary.size());
    return 0;
  }
  const std::uint32_t kernel_names_from_1_2 = now.log.capability < 3 ? 0 : 0x1168;
  return answer_by(
      now, record,
      {{0x1163, value_answer(found->owner)},                                             // DEVICES
       {0x1164, text_answer(found->from == program::origin::source ? found->text : "")}, // SOURCE
       {0x1165, value_answer(binary.size())},                                            // BINARY_SIZES
       {binaries, value_answer(binary.data())},
       {kernel_names_from_1_2, text_answer(kernel_names(*found))},
       {0x1169, bytes(found->il.begin(), found->il.end())}}); // IL
}

std::int32_t get_build_info(session& now, qv::get_object_device_info_record& record) {
  const auto found = now.world.find<program>(record.object);
  return answer_by(now, record,
                   {{0x1181, value_answer(found->build_status)}, // STATUS
                    {0x1183, text_answer(found->log)}});         // LOG
}

std::int32_t get_kernel_info(session& now, qv::get_object_info_record& record) {
  const auto found = now.world.find<kernel>(record.object);
  const auto& [name, parameters, types, required] = found->description;
  return answer_by(now, record,
                   {{0x1190, text_answer(name)},                                             // FUNCTION_NAME
                    {0x1191, value_answer(static_cast<std::uint32_t>(parameters.size()))},   // NUM_ARGS
                    {0x1194, value_answer(static_cast<object*>(found->parent.get()))},       // PROGRAM
                    {0x1195, text_answer(required[0] != 0 ? "reqd_work_group_size" : "")}}); // ATTRIBUTES
}

std::int32_t get_work_group_info(session& now, qv::get_object_device_info_record& record) {
  const auto found = now.world.find<kernel>(record.object);
  if (record.device != &now.owner)
    return kernel::invalid;
  constexpr std::uint64_t custom = 16;
  const bool has_global_size = found->parent->from == program::origin::builtin ||
                               device_info(now.owner, now.log.capability, 0x1000) == value_answer(custom);
  return answer_by(
      now, record,
      {{0x11B0, value_answer(now.owner.options.work_group_size)}, // WORK_GROUP_SIZE
       {0x11B1, value_answer(found->description.required_size)},  // COMPILE_WORK_GROUP_SIZE
       {0x11B2, value_answer(std::uint64_t{0})},                  // LOCAL_MEM_SIZE
       {0x11B3, value_answer(std::uint64_t{32})},                 // PREFERRED_WORK_GROUP_SIZE_MULTIPLE
       {has_global_size ? 0x11B5 : 0, value_answer(std::array<std::uint64_t, 3>{1024, 512, 256})}});
}

std::int32_t set_kernel_arg(session& now, qv::set_kernel_arg_record& record) {
  const auto found = now.world.find<kernel>(record.kernel);
  if (record.arg_index >= found->arguments.size())
    return -49; // CL_INVALID_ARG_INDEX
  if (now.world.argument_status) {
    found->arguments[record.arg_index] = {argument_kind::null};
    return now.world.argument_status(record.arg_size, record.arg_value);
  }
  const argument_kind expected = found->description.parameters[record.arg_index];
  if ((expected == argument_kind::value) != (record.arg_value != nullptr) &&
      expected != argument_kind::memory)
    return -50; // CL_INVALID_ARG_VALUE
  kernel_argument& given = found->arguments[record.arg_index];
  if (expected == argument_kind::local) {
    given = {expected, {}, nullptr, record.arg_size};
    return record.arg_size == 0 ? -51 : 0;
  }
  if (expected == argument_kind::value) {
    const auto* first = static_cast<const unsigned char*>(record.arg_value);
    given = {expected, bytes(first, first + record.arg_size)};
    now.log.data = given.value;
    return 0;
  }
  if (record.arg_size != sizeof(void*))
    return -51; // CL_INVALID_ARG_SIZE
  void* const handle = record.arg_value == nullptr ? nullptr : *static_cast<void* const*>(record.arg_value);
  given = {argument_kind::null};
  if (handle == nullptr)
    return 0;
  const auto memory = now.world.find<buffer>(handle);
  found->buffers[record.arg_index] = memory;
  given = {expected, {}, memory->data.data(), memory->data.size()};
  return 0;
}

std::int32_t set_constant(session& now, qv::set_program_specialization_constant_record& record) {
  const auto found = now.world.find<program>(record.program);
  if (found->from != program::origin::il || record.spec_value == nullptr)
    return program::invalid;
  const auto* first = static_cast<const unsigned char*>(record.spec_value);
  now.log.data = found->constants[record.spec_id] = bytes(first, first + record.spec_size);
  return 0;
}

using op = qv::operation;
constexpr handler_row handlers[] = {
    {op::create_program_with_source, typed<&create_with_source>::handle},
    {op::create_program_with_binary, typed<&create_with_binary>::handle},
    {op::create_program_with_il, typed<&create_with_il>::handle},
    {op::create_program_with_builtin_kernels, typed<&create_with_builtin>::handle},
    {op::get_extension_function_address_for_platform, typed<&get_extension_address>::handle},
    {op::build_program, typed<&build>::handle},
    {op::create_kernel, typed<&create_kernel>::handle},
    {op::create_kernels_in_program, typed<&create_kernels>::handle},
    {op::get_program_info, typed<&get_program_info>::handle},
    {op::get_program_build_info, typed<&get_build_info>::handle},
    {op::get_kernel_info, typed<&get_kernel_info>::handle},
    {op::get_kernel_work_group_info, typed<&get_work_group_info>::handle},
    {op::set_kernel_arg, typed<&set_kernel_arg>::handle},
    {op::set_program_specialization_constant, typed<&set_constant>::handle},
};

} // namespace

const std::span<const handler_row> program_handlers = handlers;

} // namespace scripted

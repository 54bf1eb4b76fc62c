// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Properties, and the errors within errors.
#include "fuzz/conversation.h"

namespace fuzz {

namespace {

constexpr const char* children[] = {"OPENCL", "NAME",           "KERNEL_NAMES",      "CL_DEVICE_NAME",
                                    "TYPE",   "EXCEPTION_TYPE", "OBJECT_ID",         "none",
                                    "",       "ROOT",           "CL_PROGRAM_BINARY", nullptr};

void look_at(const tarva_abi_property_s* property) {
  if (!property)
    return;
  demand(property->kind == TARVA_ABI_OBJECT_PROPERTY && property->name && property->friendly_name &&
             property->description && property->has_data <= 1,
         "a property has its words");
  if (!property->has_data)
    demand(property->data_type == ~std::uint64_t{0} && !property->element_count && !property->data,
           "a property without a value has none");
  if (property->data_type == TARVA_ABI_TYPE_STRING)
    for (std::uint64_t i = 0; i < property->element_count; ++i)
      demand(static_cast<const char* const*>(property->data)[i], "a text is not NULL");
}

template <auto Function, class Record>
void get_root(conversation& with) {
  auto* const of = with.pick<Record>();
  constexpr bool always =
      std::is_same_v<Record, tarva_abi_error_s> || std::is_same_v<Record, tarva_abi_memory_s>;
  look_at(
      with.keep<Function>(always && with.handles.is_live(of) ? expected::success : with.live_only(of), of));
}

void get_nested_error(conversation& with) {
  auto* const of = with.pick<tarva_abi_error_s>();
  with.keep<tarva_abi_get_nested_error>(with.live_only(of), of);
}

void get_child(conversation& with) {
  auto* const of = with.pick<tarva_abi_property_s>();
  const char* const name = with.bytes.one_of(children);
  look_at(with.keep<tarva_abi_get_child_property_by_name>(name ? with.live_only(of) : expected::failure, of,
                                                          name));
}

void get_children(conversation& with) {
  auto* const of = with.pick<tarva_abi_property_s>();
  auto* const array = with.make<tarva_abi_get_all_children_properties>(with.live_only(of), of);
  if (!array)
    return;
  for (std::uint64_t i = 0; i < array->count; ++i) {
    look_at(array->properties[i]);
    if (i < 4)
      with.handles.add(array->properties[i]);
    else
      tarva_abi_free_property(nullptr, array->properties[i]);
  }
  tarva_abi_free_property_array(nullptr, array);
}

void write_tree(conversation& with) {
  auto* const of = with.pick<tarva_abi_property_s>();
  input& bytes = with.bytes;
  const bool deep = bytes.rarely(8); // a whole device tree takes its time
  const tarva_abi_tree_format_s choice{bytes.below(4), deep,           1, bytes.below(2),
                                       bytes.below(2), bytes.below(2), 1};
  const auto* const format = with.rarely_null(&choice, 32);
  tarva_abi_free_property_tree_string(
      nullptr, with.make<tarva_abi_get_property_tree_string>(format ? with.live_only(of) : expected::failure,
                                                             of, format));
}

} // namespace

const std::vector<step> property_steps = {
    {get_nested_error},
    {get_child},
    {get_children},
    {write_tree},
    {get_root<tarva_abi_get_device_root_property, tarva_abi_device_s>},
    {get_root<tarva_abi_get_program_root_property, tarva_abi_program_s>},
    {get_root<tarva_abi_get_kernel_root_property, tarva_abi_kernel_s>},
    {get_root<tarva_abi_get_memory_root_property, tarva_abi_memory_s>},
    {get_root<tarva_abi_get_error_root_property, tarva_abi_error_s>},
};

} // namespace fuzz

#include "abi/argument_checks.h"
#include "abi/error_object.h"
#include "abi/tarva_singleton.h"
#include "memory/library_memory.h"
#include "objects/library_device.h"
#include "objects/library_kernel.h"
#include "objects/library_program.h"
#include "properties/property_base.h"
#include "properties/property_strings.h"

#include <cstdlib>

// Errors, and the property trees of everything.
namespace oryn::tarva::library {

template <typename record>
void tarva_singleton::get_root_property(const char* null_message, const record* handle,
                                        tarva_abi_property_s** out_property) {
  require(out_property, null_message);
  const auto object = bridge_.get_library_object(handle);
  *out_property = bridge_.make_property_handle(object->get_property({"ROOT"}), object);
}

void tarva_singleton::tarva_abi_get_device_root_property(tarva_abi_device_s* device,
                                                         tarva_abi_property_s** out_property) {
  get_root_property(
      "tarva_abi_get_device_root_property: property argument is NULL, but expected a memory location to write the result property.",
      device, out_property);
}

void tarva_singleton::tarva_abi_get_program_root_property(tarva_abi_program_s* program,
                                                          tarva_abi_property_s** out_property) {
  get_root_property(
      "tarva_abi_get_program_root_property: property argument is NULL, but expected a memory location to write the result property.",
      program, out_property);
}

void tarva_singleton::tarva_abi_get_kernel_root_property(tarva_abi_kernel_s* kernel,
                                                         tarva_abi_property_s** out_property) {
  get_root_property(
      "tarva_abi_get_kernel_root_property: property argument is NULL, but expected a memory location to write the result property.",
      kernel, out_property);
}

void tarva_singleton::tarva_abi_get_memory_root_property(tarva_abi_memory_s* memory,
                                                         tarva_abi_property_s** out_property) {
  get_root_property(
      "tarva_abi_get_memory_root_property: property argument is NULL, but expected a memory location to write the result property.",
      memory, out_property);
}

void tarva_singleton::tarva_abi_get_error_root_property(tarva_abi_error_s* error,
                                                        tarva_abi_property_s** out_property) {
  get_root_property(
      "tarva_abi_get_error_root_property: property argument is NULL, but expected a memory location to write the result property.",
      error, out_property);
}

void tarva_singleton::tarva_abi_get_nested_error(tarva_abi_error_s* error, tarva_abi_error_s** nested_error) {
  require(nested_error,
          "tarva_abi_get_nested_error: nested_error argument is NULL, but expected a memory location "
          "to write the nested error.");
  auto nested = bridge_.get_library_object(error)->get_nested_error();
  *nested_error = nested ? bridge_.make_handle<tarva_abi_error_s>(std::move(nested)) : nullptr;
}

void tarva_singleton::tarva_abi_get_child_property_by_name(tarva_abi_property_s* parent, const char* name,
                                                           tarva_abi_property_s** out_property) {
  require(parent,
          "tarva_abi_get_child_property_by_name: parent property argument is NULL, but expected a property "
          "to search for its child.");
  require(name,
          "tarva_abi_get_child_property_by_name: property name argument is NULL, but expected the name of a "
          "property to search.");
  require(out_property,
          "tarva_abi_get_child_property_by_name: property return pointer is NULL, but expected a "
          "memory location to write the result.");
  auto found = bridge_.get_property_and_owner(parent);
  auto child = found.property->get_child(name);
  *out_property = child ? bridge_.make_property_handle(std::move(child), std::move(found.owner)) : nullptr;
}

void tarva_singleton::tarva_abi_get_all_children_properties(tarva_abi_property_s* parent,
                                                            tarva_abi_property_array_s** out_properties) {
  if (!parent)
    throw std::runtime_error("tarva_abi_get_all_children_properties: parent property is NULL, but expected a "
                             "property to query for its children.");
  if (!out_properties)
    throw std::runtime_error(
        "tarva_abi_get_all_children_properties: property array return pointer is NULL, but "
        "expected a memory location to return the result.");
  const auto found = bridge_.get_property_and_owner(parent);
  std::vector<abi_bridge::owned_property> children;
  for (auto& child : found.property->get_children())
    children.push_back({child, found.owner});
  *out_properties = bridge_.make_property_array(children);
}

void tarva_singleton::tarva_abi_get_property_tree_string(tarva_abi_property_s* property,
                                                         const tarva_abi_tree_format_s* format,
                                                         char** out_string) {
  require(property,
          "tarva_abi_get_property_tree_string: property argument is NULL, but a property is expected.");
  require(format, "tarva_abi_get_property_tree_string: format argument is NULL, but a pointer to a property "
                  "formatting argument is expected.");
  require(out_string,
          "tarva_abi_get_property_tree_string: string return argument is NULL, but a memory location "
          "to return the property tree string is required.");
  const auto found = bridge_.get_property_and_owner(property);
  switch (format->kind) {
  case TARVA_ABI_TREE_TEXT:
    *out_string =
        to_text_tree(found.property, format->recursive, format->show_name, format->show_friendly_name,
                     format->show_type, format->show_description, format->show_value)
            .release();
    return;
  case TARVA_ABI_TREE_XML:
    *out_string = to_xml_tree(found.property, format->recursive).release();
    return;
  default:
    throw std::invalid_argument(
        "tarva_abi_get_property_tree_string: Unknown property tree string format provided.");
  }
}

void tarva_singleton::tarva_abi_free_error(tarva_abi_error_s* error) {
  bridge_.release_error(error);
}
void tarva_singleton::tarva_abi_free_property(tarva_abi_property_s* property) {
  bridge_.release_property(property);
}
void tarva_singleton::tarva_abi_free_property_tree_string(char* string) {
  std::free(string);
}

void tarva_singleton::tarva_abi_free_property_array(tarva_abi_property_array_s* array) {
  if (!array)
    return;
  std::free(array->properties);
  std::free(array);
}

} // namespace oryn::tarva::library

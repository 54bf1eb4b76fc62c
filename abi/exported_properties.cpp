// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exported functions for errors, and for the property trees of all objects.
#include "abi/entry_point.h"
#include "abi/error_object.h"
#include "memory/library_memory.h"
#include "properties/property.h"
#include "properties/property_strings.h"

#include <cstdlib>
#include <vector>

using namespace oryn::tarva::library;

namespace {

static_assert(has_words<tarva_abi_property_s>(8));
static_assert(offsetof(tarva_abi_property_s, name) == 1 * word);
static_assert(offsetof(tarva_abi_property_s, has_data) == 4 * word);
static_assert(offsetof(tarva_abi_property_s, data_type) == 5 * word);
static_assert(offsetof(tarva_abi_property_s, data) == 7 * word);
static_assert(TARVA_ABI_TYPE_STRING == 1 && TARVA_ABI_TYPE_UINT8V2 == 14 && TARVA_ABI_TYPE_DOUBLE16 == 68);
static_assert(has_words<tarva_abi_property_array_s>(2));
static_assert(offsetof(tarva_abi_property_array_s, properties) == 1 * word);
static_assert(has_words<tarva_abi_tree_format_s>(7));
static_assert(offsetof(tarva_abi_tree_format_s, show_type) == 4 * word);
static_assert(TARVA_ABI_TREE_XML == 2);
static_assert(TARVA_ABI_RUNTIME_FAILURE == -4 && TARVA_ABI_OBJECT_FUTURE == 6);

} // namespace

// Errors.

tarva_abi_result tarva_abi_get_error_root_property(void*, tarva_abi_error_s* error,
                                                   tarva_abi_property_s** out_property,
                                                   tarva_abi_error_s** out_error) {
  return get_root_property(
      out_error, error, out_property,
      "tarva_abi_get_error_root_property: property argument is NULL, but expected a memory location to write the result property.");
}

// NULL at the end of the chain. The handle is new each time.
tarva_abi_result tarva_abi_get_nested_error(void*, tarva_abi_error_s* error, tarva_abi_error_s** nested_error,
                                            tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(nested_error,
            "tarva_abi_get_nested_error: nested_error argument is NULL, but expected a memory location "
            "to write the nested error.");
    abi_bridge& bridge = library.bridge;
    auto nested = bridge.get_library_object(error)->get_nested_error();
    *nested_error = nested ? bridge.make_handle<tarva_abi_error_s>(std::move(nested)) : nullptr;
  });
}

void tarva_abi_free_error(void*, tarva_abi_error_s* error) {
  call_without_result([&](tarva_singleton& library) { library.bridge.release_error(error); });
}

// Properties. A property's handle keeps its owner alive, and the handles of its children do so too.

// A name that does not exist has an empty property, whose handle is the caller's like any other.
tarva_abi_result tarva_abi_get_child_property_by_name(void*, tarva_abi_property_s* parent, const char* name,
                                                      tarva_abi_property_s** out_property,
                                                      tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(parent,
            "tarva_abi_get_child_property_by_name: parent property argument is NULL, but expected a property "
            "to search for its child.");
    require(
        name,
        "tarva_abi_get_child_property_by_name: property name argument is NULL, but expected the name of a "
        "property to search.");
    require(out_property,
            "tarva_abi_get_child_property_by_name: property return pointer is NULL, but expected a "
            "memory location to write the result.");
    abi_bridge& bridge = library.bridge;
    auto found = bridge.get_property_and_owner(parent);
    auto child = found.property->get_child(name);
    *out_property = child ? bridge.make_property_handle(std::move(child), std::move(found.owner)) : nullptr;
  });
}

// Unlike elsewhere, NULL is a runtime error here.
tarva_abi_result tarva_abi_get_all_children_properties(void*, tarva_abi_property_s* parent,
                                                       tarva_abi_property_array_s** out_properties,
                                                       tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    if (!parent)
      throw std::runtime_error(
          "tarva_abi_get_all_children_properties: parent property is NULL, but expected a "
          "property to query for its children.");
    if (!out_properties)
      throw std::runtime_error(
          "tarva_abi_get_all_children_properties: property array return pointer is NULL, but "
          "expected a memory location to return the result.");
    abi_bridge& bridge = library.bridge;
    const auto found = bridge.get_property_and_owner(parent);
    std::vector<abi_bridge::owned_property> children;
    for (auto& child : found.property->get_children())
      children.push_back({child, found.owner});
    *out_properties = bridge.make_property_array(children);
  });
}

// The string is made by malloc in the first place, so it need not be copied.
tarva_abi_result tarva_abi_get_property_tree_string(void*, tarva_abi_property_s* property,
                                                    const tarva_abi_tree_format_s* format, char** out_string,
                                                    tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(property,
            "tarva_abi_get_property_tree_string: property argument is NULL, but a property is expected.");
    require(format,
            "tarva_abi_get_property_tree_string: format argument is NULL, but a pointer to a property "
            "formatting argument is expected.");
    require(out_string,
            "tarva_abi_get_property_tree_string: string return argument is NULL, but a memory location "
            "to return the property tree string is required.");
    const auto found = library.bridge.get_property_and_owner(property);
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
  });
}

void tarva_abi_free_property(void*, tarva_abi_property_s* property) {
  call_without_result([&](tarva_singleton& library) { library.bridge.release_property(property); });
}

// The handles in the array are the caller's, and stay alive.
void tarva_abi_free_property_array(void*, tarva_abi_property_array_s* array) {
  call_without_result([&](tarva_singleton&) {
    if (!array)
      return;
    std::free(array->properties);
    std::free(array);
  });
}

void tarva_abi_free_property_tree_string(void*, char* string) {
  call_without_result([&](tarva_singleton&) { std::free(string); });
}

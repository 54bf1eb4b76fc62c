#include "tools/tarva-info/library.h"

#include <new>

namespace tarva_info {
namespace {

using error_handle = std::unique_ptr<tarva_abi_error_s, handle_deleter<tarva_abi_free_error>>;

// The parts of an error object may fail to be read as well; then there is just less to tell.
std::string message_of(const error_handle& error) {
  tarva_abi_property_s* found = nullptr;
  tarva_abi_error_s* failure = nullptr;
  if (tarva_abi_get_error_root_property(nullptr, error.get(), &found, &failure) != TARVA_ABI_OK) {
    tarva_abi_free_error(nullptr, failure);
    return {};
  }
  const property_handle root(found);
  if (tarva_abi_get_child_property_by_name(nullptr, root.get(), "EXCEPTION_MESSAGE", &found, &failure) !=
      TARVA_ABI_OK) {
    tarva_abi_free_error(nullptr, failure);
    return {};
  }
  const property_handle message(found);
  return message->data_type == TARVA_ABI_TYPE_STRING && message->element_count == 1
             ? *static_cast<const char* const*>(message->data)
             : "";
}

error_handle nested_in(const error_handle& error) {
  tarva_abi_error_s* nested = nullptr;
  tarva_abi_error_s* failure = nullptr;
  if (tarva_abi_get_nested_error(nullptr, error.get(), &nested, &failure) != TARVA_ABI_OK)
    tarva_abi_free_error(nullptr, failure);
  return error_handle(nested);
}

std::string describe(tarva_abi_result result, error_handle error) {
  std::string text;
  for (; error != nullptr; error = nested_in(error)) {
    const std::string message = message_of(error);
    text += text.empty() || message.empty() ? message : ": " + message;
  }
  if (!text.empty())
    return text;
  return result == TARVA_ABI_OUT_OF_MEMORY ? "out of memory" : "unknown failure of the library";
}

// Calls a function of the library with what stands between its first and its last argument.
template <auto Function, typename... Arguments>
void call(Arguments... arguments) {
  tarva_abi_error_s* error = nullptr;
  const tarva_abi_result result = Function(nullptr, arguments..., &error);
  if (result != TARVA_ABI_OK)
    throw library_failure(describe(result, error_handle(error)));
}

} // namespace

std::vector<device_handle> get_devices() {
  tarva_abi_device_array_s* found = nullptr;
  call<tarva_abi_get_devices>(&found);
  const std::unique_ptr<tarva_abi_device_array_s, handle_deleter<tarva_abi_free_device_array>> array(found);
  std::vector<device_handle> devices(array->count);
  for (std::size_t i = 0; i < devices.size(); ++i)
    devices[i].reset(array->devices[i]);
  return devices;
}

property_handle get_root(const device_handle& device) {
  tarva_abi_property_s* found = nullptr;
  call<tarva_abi_get_device_root_property>(device.get(), &found);
  return property_handle(found);
}

property_handle get_child(const property_handle& parent, const std::string& name) {
  tarva_abi_property_s* found = nullptr;
  call<tarva_abi_get_child_property_by_name>(parent.get(), name.c_str(), &found);
  return property_handle(found);
}

std::vector<property_handle> get_children(const property_handle& parent) {
  tarva_abi_property_array_s* found = nullptr;
  call<tarva_abi_get_all_children_properties>(parent.get(), &found);
  const std::unique_ptr<tarva_abi_property_array_s, handle_deleter<tarva_abi_free_property_array>> array(
      found);
  std::vector<property_handle> children(array->count);
  for (std::size_t i = 0; i < children.size(); ++i)
    children[i].reset(array->properties[i]);
  for (const property_handle& child : children)
    if (child == nullptr)
      throw std::bad_alloc();
  return children;
}

std::string get_tree_string(const property_handle& property, const tarva_abi_tree_format_s& format) {
  char* found = nullptr;
  call<tarva_abi_get_property_tree_string>(property.get(), &format, &found);
  const std::unique_ptr<char, handle_deleter<tarva_abi_free_property_tree_string>> text(found);
  return text.get();
}

} // namespace tarva_info

// The calls of the library that the tool makes, with owners for handles and exceptions for error objects.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <tarva_abi.h>
#include <vector>

namespace tarva_info {

// What the library said when a call failed.
class library_failure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

template <auto Free>
struct handle_deleter {
  template <typename T>
  void operator()(T* handle) const {
    Free(nullptr, handle);
  }
};
using device_handle = std::unique_ptr<tarva_abi_device_s, handle_deleter<tarva_abi_release_device>>;
using property_handle = std::unique_ptr<tarva_abi_property_s, handle_deleter<tarva_abi_free_property>>;

std::vector<device_handle> get_devices();
property_handle get_root(const device_handle& device);

// A name that does not exist gives a property with an empty name.
property_handle get_child(const property_handle& parent, const std::string& name);
// One child whose value cannot be read fails the call.
std::vector<property_handle> get_children(const property_handle& parent);

std::string get_tree_string(const property_handle& property, const tarva_abi_tree_format_s& format);

} // namespace tarva_info

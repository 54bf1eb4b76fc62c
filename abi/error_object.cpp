#include "abi/error_object.h"

#include "properties/make_property.h"

#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

error_object::error_object(std::uint64_t exception_type, std::string message)
    : message_(std::move(message)), exception_type_(exception_type) {}

std::shared_ptr<error_object> error_object::set_nested_error(std::uint64_t exception_type,
                                                             std::string message) {
  if (nested_ != nullptr)
    throw std::logic_error("Error object already has a nested error, cannot set another one.");
  nested_ = std::make_shared<error_object>(exception_type, std::move(message));
  return nested_;
}

std::shared_ptr<property_base> error_object::get_property(property_path path) {
  if (is_path(path, {"ROOT"})) {
    return make_described_property(
        this, std::move(path), "Root property.",
        "The root property of an error, simply provided as the main root element.");
  }
  if (is_path(path, {"ROOT", "EXCEPTION_TYPE"})) {
    return make_described_property(this, std::move(path), "Exception type.",
                                   "The type of exception encountered.", exception_type_);
  }
  if (is_path(path, {"ROOT", "EXCEPTION_MESSAGE"})) {
    return make_described_property(this, std::move(path), "Exception message.",
                                   "A helpful message relating to the exception encountered.", message_);
  }
  return std::make_shared<property_base>();
}

std::vector<std::string> error_object::get_child_names(const property_path& path) {
  if (is_path(path, {"ROOT"}))
    return {"EXCEPTION_TYPE", "EXCEPTION_MESSAGE"};
  return {};
}

} // namespace oryn::tarva::library

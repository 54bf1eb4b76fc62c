#pragma once

#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// A failure as data: one link of a chain that leads from the outermost exception inward.
class error_object : public property_interface {
public:
  error_object(std::uint64_t exception_type, std::string message);

  std::shared_ptr<property_base> get_property(property_path path) override;
  std::vector<std::string> get_child_names(const property_path& path) override;

  // Makes the next link of the chain and returns it; at most once for each object.
  std::shared_ptr<error_object> set_nested_error(std::uint64_t exception_type, std::string message);
  // Empty at the end of the chain.
  std::shared_ptr<error_object> get_nested_error() const { return nested_; }

  const std::string& get_message() const { return message_; }
  std::uint64_t get_exception_type() const { return exception_type_; }

private:
  std::shared_ptr<error_object> nested_;
  std::string message_;
  std::uint64_t exception_type_;
};

} // namespace oryn::tarva::library

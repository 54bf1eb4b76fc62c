#include "properties/property_base.h"

#include "properties/element.h"

#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

property_base::property_base(property_interface* owner, property_path path,
                             std::shared_ptr<const property_texts> texts)
    : owner_(owner), path_(std::move(path)), texts_(std::move(texts)) {}

const std::string& property_base::no_text() {
  static const std::string none;
  return none;
}

bool property_base::has_data() const {
  return false;
}

data_type property_base::get_data_type() const {
  throw std::logic_error("This property has no data, therefore it cannot have a type.");
}

std::uint64_t property_base::get_element_count() const {
  return 0;
}

const void* property_base::get_data() const {
  return nullptr;
}

void property_base::check_owner() const {
  if (is_empty()) {
    throw std::logic_error(
        "Expected property to have a valid pointer to an object inherited from property_interface.");
  }
}

void property_base::check_has_data() const {
  check_owner();
  if (!has_data()) {
    throw std::logic_error("Expected property to contain data.");
  }
}

std::shared_ptr<property_base> property_base::get_child(const std::string& name) const {
  check_owner();
  property_path path;
  path.reserve(path_.size() + 1);
  path = path_;
  path.push_back(name);
  return owner_->get_property(path);
}

std::vector<std::shared_ptr<property_base>> property_base::get_children() const {
  std::vector<std::shared_ptr<property_base>> children;
  for_each_child([&](std::shared_ptr<property_base> child) { children.push_back(std::move(child)); });
  return children;
}

std::string property_base::element_to_string(std::uint64_t index) const {
  std::string text;
  append_element(text, index);
  return text;
}

void property_base::append_element(std::string& out, std::uint64_t index) const {
  check_has_data();
  const std::uint64_t count = get_element_count();
  if (index >= count) {
    throw std::out_of_range("Attempting to access element index " + std::to_string(index) +
                            " of the property but only " + std::to_string(count) + " elements exist.");
  }
  append_element_text(out, get_data(), get_data_type(), index);
}

} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/property.h"

#include "properties/element.h"

#include <stdexcept>

namespace oryn::tarva::library {

void property_dictionary::add(const std::string& field_name, const std::string& friendly_name,
                              const std::string& description) {
  if (!entries_.try_emplace(field_name, property_texts{friendly_name, description}).second) {
    throw std::logic_error("Inserting a duplicate entry for the fieldname \"" + field_name +
                           "\" into the property dictionary.");
  }
}

// The pointer counts no references, so that the properties of all threads need not share a counter. It need not: the
// catalogues, and the dictionaries in them, stand until the process ends.
std::shared_ptr<const property_texts> property_dictionary::get_texts(const std::string& field_name) const {
  const auto found = entries_.find(field_name);
  if (found == entries_.end())
    throw std::logic_error("Could not find the fieldname \"" + field_name + "\" in the property dictionary.");
  return {std::shared_ptr<const void>(), &found->second};
}

property_base::property_base(property_interface* owner, property_path path,
                             std::shared_ptr<const property_texts> texts)
    : owner_(owner), path_(std::move(path)), texts_(std::move(texts)) {}

// What the texts of an empty property refer to.
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
  if (!has_data())
    throw std::logic_error("Expected property to contain data.");
}

// Room for the longer path is taken once, before it is copied.
std::shared_ptr<property_base> property_base::get_child(std::string name) const {
  check_owner();
  property_path path;
  path.reserve(path_.size() + 1);
  path = path_;
  path.push_back(std::move(name));
  return owner_->get_property(std::move(path));
}

// A child that is listed but not there is among them, as an empty property.
std::vector<std::shared_ptr<property_base>> property_base::get_children() const {
  check_owner();
  std::vector<std::shared_ptr<property_base>> children;
  for (std::string& name : owner_->get_child_names(path_))
    children.push_back(get_child(std::move(name)));
  return children;
}

std::string property_base::element_to_string(std::uint64_t index) const {
  check_has_data();
  const std::uint64_t count = get_element_count();
  if (index >= count) {
    throw std::out_of_range("Attempting to access element index " + std::to_string(index) +
                            " of the property but only " + std::to_string(count) + " elements exist.");
  }
  return element_to_text(get_data(), get_data_type(), index);
}

void property_base::visit(property_visitor& visitor, bool recursive) const {
  check_owner();
  value_view value;
  if (has_data())
    value = {get_data_type(), get_element_count(), get_data()};
  visitor.begin({get_name(), get_friendly_name(), get_description()}, value);
  if (recursive)
    owner_->visit_descendants(path_, visitor);
  visitor.end();
}

// The pointers stand as long as the strings do not move, and these never change.
property<std::string>::property(property_interface* owner, property_path path,
                                std::shared_ptr<const property_texts> texts, values_type values)
    : property_base(owner, std::move(path), std::move(texts)), values_(std::move(values)) {
  value_pointers_.reserve(values_.size());
  for (const std::string& value : values_)
    value_pointers_.push_back(value.c_str());
}

// For owners whose trees are too small to be worth more: each child is made as a user would get it.
void property_interface::visit_descendants(const property_path& path, property_visitor& visitor) {
  property_path child_path = path;
  child_path.emplace_back();
  for (std::string& name : get_child_names(path)) {
    child_path.back() = std::move(name);
    const std::shared_ptr<property_base> child = get_property(child_path);
    if (child->is_empty())
      visitor.visit_empty();
    else
      child->visit(visitor, true);
  }
}

} // namespace oryn::tarva::library

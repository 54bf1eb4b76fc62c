#include "properties/property_dictionary.h"

#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

void property_dictionary::add(const std::string& field_name, const std::string& friendly_name,
                              const std::string& description) {
  add_entry(field_name, {{friendly_name, description}, std::nullopt});
}

void property_dictionary::add(const std::string& field_name, const std::string& friendly_name,
                              const std::string& description, data_type type) {
  add_entry(field_name, {{friendly_name, description}, type});
}

void property_dictionary::add_entry(const std::string& field_name, const entry& new_entry) {
  if (!entries_.try_emplace(field_name, new_entry).second) {
    throw std::logic_error("Inserting a duplicate entry for the fieldname \"" + field_name +
                           "\" into the property dictionary.");
  }
}

const std::string& property_dictionary::get_friendly_name(const std::string& field_name) const {
  return get_entry(field_name).texts.friendly_name;
}

const std::string& property_dictionary::get_description(const std::string& field_name) const {
  return get_entry(field_name).texts.description;
}

// An owner of nothing: the dictionaries of all families stand until the process ends.
std::shared_ptr<const property_texts> property_dictionary::get_texts(const std::string& field_name) const {
  return {std::shared_ptr<const void>(), &get_entry(field_name).texts};
}

const property_dictionary::entry& property_dictionary::get_entry(const std::string& field_name) const {
  const auto found = entries_.find(field_name);
  if (found == entries_.end())
    throw std::logic_error("Could not find the fieldname \"" + field_name + "\" in the property dictionary.");
  return found->second;
}

} // namespace oryn::tarva::library

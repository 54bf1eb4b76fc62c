#pragma once

#include "properties/data_type.h"

#include <optional>
#include <string>
#include <unordered_map>

namespace oryn::tarva::library {

// What is constant about a field name of one family of objects. Filled once, then only read.
class property_dictionary {
public:
  struct entry {
    std::string friendly_name;
    std::string description;
    std::optional<data_type> type;
  };

  void add(const std::string& field_name, const std::string& friendly_name, const std::string& description);
  void add(const std::string& field_name, const std::string& friendly_name, const std::string& description,
           data_type type);

  const std::string& get_friendly_name(const std::string& field_name) const;
  const std::string& get_description(const std::string& field_name) const;
  // Both texts at the cost of one look-up.
  const entry& get_entry(const std::string& field_name) const;

  std::size_t size() const { return entries_.size(); }

private:
  void add_entry(const std::string& field_name, entry&& new_entry);

  std::unordered_map<std::string, entry> entries_;
};

} // namespace oryn::tarva::library

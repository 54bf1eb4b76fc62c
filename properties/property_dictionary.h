#pragma once

#include "properties/data_type.h"
#include "properties/property_base.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace oryn::tarva::library {

// What is constant about a field name of one family of objects. Filled once, then only read.
class property_dictionary {
public:
  struct entry {
    property_texts texts;
    std::optional<data_type> type;
  };

  void add(const std::string& field_name, const std::string& friendly_name, const std::string& description);
  void add(const std::string& field_name, const std::string& friendly_name, const std::string& description,
           data_type type);

  const std::string& get_friendly_name(const std::string& field_name) const;
  const std::string& get_description(const std::string& field_name) const;
  // Both texts. They stay the dictionary's, which outlives whoever asks.
  std::shared_ptr<const property_texts> get_texts(const std::string& field_name) const;

  std::size_t size() const { return entries_.size(); }

private:
  void add_entry(const std::string& field_name, const entry& new_entry);
  const entry& get_entry(const std::string& field_name) const;

  std::unordered_map<std::string, entry> entries_;
};

} // namespace oryn::tarva::library

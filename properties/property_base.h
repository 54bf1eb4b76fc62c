#pragma once

#include "properties/data_type.h"
#include "properties/property_interface.h"
#include "properties/property_view.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

// What a property says of itself to people.
struct property_texts {
  std::string friendly_name;
  std::string description;
};

// One property; on its own, a property without a value. The owner must outlive every use that needs it.
class property_base {
public:
  // An empty property: what an owner answers for a path it does not know.
  property_base() = default;
  // Its name is the last key of the path.
  property_base(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts);
  property_base(const property_base&) = delete;
  property_base& operator=(const property_base&) = delete;
  virtual ~property_base() = default;

  virtual bool has_data() const;
  virtual data_type get_data_type() const;
  virtual std::uint64_t get_element_count() const;
  virtual const void* get_data() const;

  bool is_empty() const { return owner_ == nullptr; }
  const std::string& get_name() const { return path_.empty() ? no_text() : path_.back(); }
  const char* get_name_pointer() const { return get_name().c_str(); }
  const std::string& get_friendly_name() const { return texts_ ? texts_->friendly_name : no_text(); }
  const char* get_friendly_name_pointer() const { return get_friendly_name().c_str(); }
  const std::string& get_description() const { return texts_ ? texts_->description : no_text(); }
  const char* get_description_pointer() const { return get_description().c_str(); }

  void check_owner() const;
  void check_has_data() const;

  std::shared_ptr<property_base> get_child(std::string name) const;
  std::vector<std::shared_ptr<property_base>> get_children() const;
  // Shows everything below this property.
  void visit_descendants(property_visitor& visitor) const;

  std::string element_to_string(std::uint64_t index) const;
  // Not of an empty property.
  property_view get_view() const;

private:
  static const std::string& no_text();

  property_interface* owner_ = nullptr;
  property_path path_;
  std::shared_ptr<const property_texts> texts_;
};

} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// One property as a user holds it: what it says of itself, its value, and the way to its children.
#pragma once

#include "properties/data_type.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// What a property says of itself to people. Shared by all properties of one key.
struct property_texts {
  std::string friendly_name;
  std::string description;
};

// The texts of all field names of one family of objects. Filled while the catalogue is made, then only read,
// so that it needs no lock.
class property_dictionary {
public:
  // std::logic_error for a field name that is there already.
  void add(const std::string& field_name, const std::string& friendly_name, const std::string& description);

  // std::logic_error for a field name that is not there. The texts stay the dictionary's, which must outlive the
  // pointer.
  std::shared_ptr<const property_texts> get_texts(const std::string& field_name) const;

private:
  std::unordered_map<std::string, property_texts> entries_;
};

// One property; on its own, a property without a value. Never changed once it is made, so that any thread may read it
// without a lock. It does not keep its owner, which must outlive every use that needs it: the exported functions hold
// the owner beside each property that a user has.
class property_base {
public:
  // An empty property: what an owner answers for a path it does not know.
  property_base() = default;
  // Its name is the last key of the path.
  property_base(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts);
  property_base(const property_base&) = delete;
  property_base& operator=(const property_base&) = delete;
  virtual ~property_base() = default;

  // Without a value, the type throws std::logic_error, the count is 0, and there are no data.
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

  // Both throw std::logic_error: of an empty property, and of one without a value.
  void check_owner() const;
  void check_has_data() const;

  // What the owner says now, and not when this property was made. A child that it does not know is empty.
  std::shared_ptr<property_base> get_child(std::string name) const;
  std::vector<std::shared_ptr<property_base>> get_children() const;

  // std::out_of_range beyond the last element.
  std::string element_to_string(std::uint64_t index) const;
  // Shows this property and, if `recursive`, everything below it. std::logic_error of an empty property.
  void visit(property_visitor& visitor, bool recursive) const;

private:
  static const std::string& no_text();

  property_interface* owner_ = nullptr;
  property_path path_;
  std::shared_ptr<const property_texts> texts_;
};

// What a property of T holds: the type that the user sees and the C++ type of one value.
template <class T>
struct property_traits;

template <>
struct property_traits<std::string> {
  static constexpr data_type type = data_type::string_;
  using value = std::string;
};

template <>
struct property_traits<bool> {
  static constexpr data_type type = data_type::boolean_;
  using value = std::uint32_t;
};

template <>
struct property_traits<unsigned char> {
  static constexpr data_type type = data_type::uint8_;
  using value = unsigned char;
};

template <>
struct property_traits<unsigned long> {
  static constexpr data_type type = data_type::uint64_;
  using value = std::uint64_t;
};

// A property with a value, which it owns. A value is always a vector, even for one element.
template <class T>
class property : public property_base {
public:
  using values_type = std::vector<typename property_traits<T>::value>;

  property(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts,
           values_type values)
      : property_base(owner, std::move(path), std::move(texts)), values_(std::move(values)) {}

  bool has_data() const override { return true; }
  data_type get_data_type() const override { return property_traits<T>::type; }
  std::uint64_t get_element_count() const override { return values_.size(); }
  const void* get_data() const override { return values_.empty() ? nullptr : values_.data(); }

private:
  values_type values_;
};

// Strings leave the library as an array of pointers, which stands beside the strings themselves.
template <>
class property<std::string> : public property_base {
public:
  using values_type = std::vector<std::string>;

  property(property_interface* owner, property_path path, std::shared_ptr<const property_texts> texts,
           values_type values);

  bool has_data() const override { return true; }
  data_type get_data_type() const override { return data_type::string_; }
  std::uint64_t get_element_count() const override { return values_.size(); }
  const void* get_data() const override { return values_.empty() ? nullptr : value_pointers_.data(); }

private:
  values_type values_;
  std::vector<const char*> value_pointers_;
};

} // namespace oryn::tarva::library

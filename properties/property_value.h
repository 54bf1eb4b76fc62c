// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Values of properties on their way from an owner to its properties or to a visitor.
#pragma once

#include "properties/property.h"
#include "properties/property_interface.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// The value of a property that is being read: none, or elements of one of the four types that properties have. The
// owner sets it; then it is looked at, or becomes the value of a property. It lives on the stack of the thread that
// asks. Each setting replaces what was there and uses its storage again, so that a walk over a tree takes memory
// once. If a setting throws, there is no value.
class property_value {
public:
  property_value() = default;
  property_value(const property_value&) = delete;
  property_value& operator=(const property_value&) = delete;

  void clear() { view_ = {}; }
  void set(std::uint64_t value) {
    numbers_.front() = value;
    view_ = {data_type::uint64_, 1, numbers_.data()};
  }
  void set(std::uint32_t value) { set(std::uint64_t{value}); }
  void set(const std::array<std::uint64_t, 3>& values);
  void set(bool value) {
    flag_ = value ? 1 : 0;
    view_ = {data_type::boolean_, 1, &flag_};
  }
  void set(std::string_view value);
  void set(const char*) = delete; // it would become a bool
  void set(const std::vector<std::string>& values);
  void set(std::vector<unsigned char> values);

  // One string, which `read` puts into the string given.
  template <class Reader>
  void set_text(Reader read) {
    clear();
    read(text_);
    pointers_.assign(1, text_.c_str());
    show_strings();
  }
  // Several: `read` puts them, each closed by a zero, into the string given, and pointers to them into the
  // vector, which is empty.
  template <class Reader>
  void set_texts(Reader read) {
    clear();
    pointers_.clear();
    read(text_, pointers_);
    show_strings();
  }

  // Stands until the next change.
  const value_view& view() const { return view_; }
  // The bytes, which go to the caller. Only for a value of bytes.
  std::vector<unsigned char> take_bytes();

private:
  // `view_` points into the storage below it, one of which holds the value.
  void show_strings() { view_ = {data_type::string_, pointers_.size(), pointers_.data()}; }

  value_view view_;
  std::array<std::uint64_t, 3> numbers_{};
  std::uint32_t flag_ = 0;
  std::string text_;
  std::vector<const char*> pointers_;
  std::vector<unsigned char> bytes_;
};

// A property with the value that `value` holds, if any: a copy, or, of bytes, the value itself. std::logic_error for
// an empty path.
std::shared_ptr<property_base> make_property(property_interface* owner, property_path path,
                                             std::shared_ptr<const property_texts> texts,
                                             property_value& value);

// A property with texts of its own, for owners without a catalogue; `value` is nothing, or one value that a
// property_value can be set to.
template <class... T>
std::shared_ptr<property_base> make_described_property(property_interface* owner, property_path path,
                                                       const std::string& friendly_name,
                                                       const std::string& description, T... value) {
  property_value held;
  (held.set(std::move(value)), ...);
  auto texts = std::make_shared<const property_texts>(property_texts{friendly_name, description});
  return make_property(owner, std::move(path), std::move(texts), held);
}

} // namespace oryn::tarva::library

#pragma once

#include "properties/property_view.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace oryn::tarva::library {

// The value of a property that is being read: none, or elements of one of the four types that properties have.
// Each setting replaces what was there, and uses its storage again.
class property_value {
public:
  property_value() = default;
  property_value(const property_value&) = delete;
  property_value& operator=(const property_value&) = delete;

  void clear() { view_ = {}; }
  void set(std::uint64_t value);
  void set(std::uint32_t value) { set(std::uint64_t{value}); }
  void set(const std::array<std::uint64_t, 3>& values);
  void set(bool value);
  void set(std::string_view value);
  void set(const char*) = delete; // it would become a bool
  void set(const std::vector<std::string>& values);
  void set(std::vector<unsigned char> values);

  // One string, which `read` puts into the string given.
  template <typename reader>
  void set_text(reader read) {
    clear();
    read(text_);
    pointers_.assign(1, text_.c_str());
    show_strings();
  }
  // Several: `read` puts them, each closed by a zero, into the string given, and pointers to them into the
  // vector, which is empty.
  template <typename reader>
  void set_texts(reader read) {
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
  void show_strings() { view_ = {data_type::string_, pointers_.size(), pointers_.data()}; }

  value_view view_;
  std::array<std::uint64_t, 3> numbers_{};
  std::uint32_t flag_ = 0;
  std::string text_;
  std::vector<const char*> pointers_;
  std::vector<unsigned char> bytes_;
};

} // namespace oryn::tarva::library

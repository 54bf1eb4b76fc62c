// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "properties/property_value.h"

#include <stdexcept>

namespace oryn::tarva::library {
namespace {

// The elements, copied; `Stored` is how one of them lies there.
template <class T, class Stored>
typename property<T>::values_type copy_elements(const value_view& value) {
  const auto* first = static_cast<const Stored*>(value.data);
  return {first, first + value.element_count};
}

} // namespace

void property_value::set(const std::array<std::uint64_t, 3>& values) {
  numbers_ = values;
  view_ = {data_type::uint64_, numbers_.size(), numbers_.data()};
}

// The string's own zero closes it.
void property_value::set(std::string_view value) {
  set_text([value](std::string& text) { text = value; });
}

void property_value::set(const std::vector<std::string>& values) {
  set_texts([&values](std::string& text, std::vector<const char*>& pointers) {
    std::size_t size = 0;
    for (const std::string& value : values)
      size += value.size() + 1;
    text.clear();
    text.reserve(size); // the pointers must not move
    for (const std::string& value : values) {
      pointers.push_back(text.data() + text.size());
      text.append(value.c_str(), value.size() + 1);
    }
  });
}

// Bytes may be many, such as those of a program: they are handed on and not copied.
void property_value::set(std::vector<unsigned char> values) {
  bytes_ = std::move(values);
  view_ = {data_type::uint8_, bytes_.size(), bytes_.data()};
}

std::vector<unsigned char> property_value::take_bytes() {
  clear();
  return std::exchange(bytes_, {});
}

// Four types, as no owner has values of another. A value that is none gives a property without a value.
std::shared_ptr<property_base> make_property(property_interface* owner, property_path path,
                                             std::shared_ptr<const property_texts> texts,
                                             property_value& value) {
  if (path.empty())
    throw std::logic_error("Expected path to be non-empty.");
  const value_view view = value.view();
  switch (view.type) {
  case data_type::string_:
    return std::make_shared<property<std::string>>(owner, std::move(path), std::move(texts),
                                                   copy_elements<std::string, const char*>(view));
  case data_type::boolean_:
    return std::make_shared<property<bool>>(owner, std::move(path), std::move(texts),
                                            copy_elements<bool, std::uint32_t>(view));
  case data_type::uint8_:
    return std::make_shared<property<unsigned char>>(owner, std::move(path), std::move(texts),
                                                     value.take_bytes());
  case data_type::uint64_:
    return std::make_shared<property<unsigned long>>(owner, std::move(path), std::move(texts),
                                                     copy_elements<unsigned long, std::uint64_t>(view));
  default:
    return std::make_shared<property_base>(owner, std::move(path), std::move(texts));
  }
}

} // namespace oryn::tarva::library

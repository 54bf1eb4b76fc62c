#include "properties/property_value.h"

#include <utility>

namespace oryn::tarva::library {

void property_value::set(std::uint64_t value) {
  numbers_.front() = value;
  view_ = {data_type::uint64_, 1, numbers_.data()};
}

void property_value::set(const std::array<std::uint64_t, 3>& values) {
  numbers_ = values;
  view_ = {data_type::uint64_, numbers_.size(), numbers_.data()};
}

void property_value::set(bool value) {
  flag_ = value ? 1 : 0;
  view_ = {data_type::boolean_, 1, &flag_};
}

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

void property_value::set(std::vector<unsigned char> values) {
  bytes_ = std::move(values);
  view_ = {data_type::uint8_, bytes_.size(), bytes_.data()};
}

std::vector<unsigned char> property_value::take_bytes() {
  clear();
  return std::exchange(bytes_, {});
}

} // namespace oryn::tarva::library

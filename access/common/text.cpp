#include "access/common/text.h"

#include <algorithm>
#include <cctype>

namespace oryn::skerv::common {
namespace {

// No locale takes a printable character of ASCII for whitespace, so these need not be asked about.
constexpr auto is_whitespace = [](char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte <= ' ' || byte > '~') && std::isspace(byte) != 0;
};

constexpr auto is_semicolon = [](char c) { return c == ';'; };

// Calls `use` with the place and the length of each part.
template <class Predicate, class User>
void find_parts(std::string_view text, Predicate is_separator, User use) {
  auto begin = text.begin();
  while (true) {
    begin = std::find_if_not(begin, text.end(), is_separator);
    if (begin == text.end())
      return;
    const auto end = std::find_if(begin, text.end(), is_separator);
    const auto place = static_cast<std::size_t>(begin - text.begin());
    const auto length = static_cast<std::size_t>(end - begin);
    begin = end == text.end() ? end : end + 1; // on, since `use` may write over the separator
    use(place, length);
  }
}

template <class Predicate>
std::vector<std::string> split(std::string_view text, Predicate is_separator) {
  std::vector<std::string> parts;
  find_parts(text, is_separator,
             [&](std::size_t begin, std::size_t length) { parts.emplace_back(text.substr(begin, length)); });
  return parts;
}

template <class Predicate>
void split_in_place(std::string& text, std::vector<const char*>& parts, Predicate is_separator) {
  find_parts(text, is_separator, [&](std::size_t begin, std::size_t length) {
    text[begin + length] = '\0';
    parts.push_back(text.data() + begin);
  });
}

bool equal_letters(char left, char right) {
  return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

} // namespace

std::vector<std::string> split_on_whitespace(std::string_view text) {
  return split(text, is_whitespace);
}

std::vector<std::string> split_on_semicolon(std::string_view text) {
  return split(text, is_semicolon);
}

void split_in_place_on_whitespace(std::string& text, std::vector<const char*>& parts) {
  split_in_place(text, parts, is_whitespace);
}

void split_in_place_on_semicolon(std::string& text, std::vector<const char*>& parts) {
  split_in_place(text, parts, is_semicolon);
}

std::string join_with_semicolon(const std::vector<std::string>& list) {
  std::string text;
  for (const std::string& element : list) {
    if (&element != &list.front())
      text += ';';
    text += element;
  }
  return text;
}

bool has_extension(const std::vector<std::string>& list, std::string_view name) {
  return std::any_of(list.begin(), list.end(), [name](const std::string& element) {
    return element.size() <= name.size() &&
           std::equal(element.begin(), element.end(), name.begin(), equal_letters);
  });
}

} // namespace oryn::skerv::common

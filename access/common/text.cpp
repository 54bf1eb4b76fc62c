#include "access/common/text.h"

#include <algorithm>
#include <cctype>

namespace oryn::skerv::common {
namespace {

template <typename Predicate>
std::vector<std::string> split(std::string_view text, Predicate is_separator) {
  std::vector<std::string> pieces;
  auto begin = text.begin();
  while (true) {
    begin = std::find_if_not(begin, text.end(), is_separator);
    if (begin == text.end())
      return pieces;
    const auto end = std::find_if(begin, text.end(), is_separator);
    pieces.emplace_back(begin, end);
    begin = end;
  }
}

bool equal_letters(char left, char right) {
  return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

} // namespace

std::vector<std::string> split_on_whitespace(std::string_view text) {
  return split(text, [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; });
}

std::vector<std::string> split_on_semicolon(std::string_view text) {
  return split(text, [](char c) { return c == ';'; });
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

// The lists that OpenCL packs into one string: names of extensions are parted by blanks, names of kernels by
// semicolons. Plain functions without state, for any thread. Used where a parameter of an object is such a list.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace oryn::skerv::common {

// Neither of the two yields an empty string.
std::vector<std::string> split_on_whitespace(std::string_view text);
std::vector<std::string> split_on_semicolon(std::string_view text);

// The same without copies, for values that are only looked at: each part is ended by a zero where it lies in `text`,
// and pointed to.
void split_in_place_on_whitespace(std::string& text, std::vector<const char*>& parts);
void split_in_place_on_semicolon(std::string& text, std::vector<const char*>& parts);

// The reverse: no semicolon follows the last element, and no elements give an empty string.
std::string join_with_semicolon(const std::vector<std::string>& list);

// Whether a device has an extension: true if an element of `list` is `name`, or the beginning of it, whatever the
// case of the letters.
bool has_extension(const std::vector<std::string>& list, std::string_view name);

} // namespace oryn::skerv::common

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Options of a build, and names, which are text. How implementations read them is no part of any standard: what is told here
// of their ways was found by trying.
#include "capability/program_checks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qv {
namespace {

// The words of `options`, which end at blanks outside of quotes, and at quotes themselves where these cut.
// Nothing if a quote has no end.
std::optional<std::vector<std::string>> words_of(std::string_view options, bool quotes_cut) {
  std::vector<std::string> words(1);
  bool quoted = false;
  for (const char each : options) {
    if (each == '"')
      quoted = !quoted;
    if (each == '"' ? quotes_cut : each == ' ' && !quoted)
      words.emplace_back();
    else if (each != '"')
      words.back() += each;
  }
  if (quoted)
    return std::nullopt;
  words.erase(std::remove(words.begin(), words.end(), std::string()), words.end());
  return words;
}

// Whether the value of an option is the next word. OpenCL has three such options, the compilers some more.
bool takes_next_word(const std::string& option) {
  constexpr std::array<std::string_view, 11> options{
      "-D", "-I", "-x", "-U", "-o", "-include", "-imacros", "-isystem", "-iquote", "-idirafter", "-mllvm"};
  return std::find(options.begin(), options.end(), option) != options.end();
}

// Compilers with a command line of their own take any other word for a file, "-" for the standard input and "@word" for more
// options, and end the process where they cannot read it.
bool are_options_alone(const std::vector<std::string>& words) {
  bool is_value = false;
  for (const std::string& word : words) {
    if (!is_value && (word.size() < 2 || word[0] != '-'))
      return false;
    is_value = !is_value && takes_next_word(word);
  }
  return true;
}

// Only -D and -I are looked for beyond the end. "-D" as the value of another option is harmless, and refused all the same:
// nobody means it.
bool ends_without_value(std::string_view options) {
  const std::size_t end = options.find_last_not_of(' ');
  if (end == std::string_view::npos)
    return false;
  const std::string_view last = options.substr(0, end + 1).substr(options.rfind(' ', end) + 1);
  return last == "-D" || last == "-I";
}

} // namespace

// Neither overlong forms nor surrogates nor codes beyond Unicode: a strict decoder ends the process over each.
bool is_utf8(std::string_view text) {
  constexpr std::array<std::uint32_t, 4> smallest_of_length{0, 0x80, 0x800, 0x10000};
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const std::size_t more = lead < 0x80 ? 0 : lead < 0xC0 ? 4 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if (more > text.size() - i || lead > 0xF4)
      return false;
    std::uint32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
    for (const char each : text.substr(i, more)) {
      if ((static_cast<unsigned char>(each) & 0xC0) != 0x80)
        return false;
      code = code << 6 | (static_cast<unsigned char>(each) & 0x3F);
    }
    i += more;
    if (more == 4 || code < smallest_of_length[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
      return false;
  }
  return true;
}

bool are_harmless_options(const quirks& known, std::string_view options) {
  if (known.reads_past_last_option && ends_without_value(options))
    return false;
  if (known.needs_utf8 && !is_utf8(options))
    return false;
  if (!known.takes_words_for_files)
    return true;
  // A quote without an end is a word that goes on beyond the end.
  const auto words = words_of(options, known.cuts_options_at_quotes);
  if (!words || !are_options_alone(*words))
    return false;
  return !known.cuts_options_at_quotes ||
         std::all_of(words->begin(), words->end(), [](const std::string& word) { return word.size() > 1; });
}

} // namespace qv

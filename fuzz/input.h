// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Random bytes as a source of choices.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace fuzz {

// A string of bytes, read as a string of choices. Behind its end every choice is the first one.
class input {
public:
  input(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool is_empty() const { return next_ == end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - next_); }
  const std::uint8_t* data() const { return next_; }

  // Takes the first `count` bytes away, as an input of their own.
  input split(std::size_t count) {
    const std::uint8_t* const first = next_;
    next_ += std::min(count, size());
    return {first, static_cast<std::size_t>(next_ - first)};
  }

  std::size_t below(std::size_t limit) { return is_empty() ? 0 : *next_++ % limit; }
  // True for one choice in `rarity`, but never behind the end.
  bool rarely(std::size_t rarity) { return below(rarity) == rarity - 1; }
  template <class T, std::size_t Count>
  const T& one_of(const T (&list)[Count]) {
    return list[below(Count)];
  }

private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

} // namespace fuzz

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Texts that grow at their end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace oryn::tarva::library {

// A text in memory of malloc, so that the caller of a C interface can have it as it is. A tree of properties is
// written into one such buffer by the thread that asked for it. Without memory it throws std::bad_alloc, and keeps
// what it has; so it does with std::length_error for what would take it beyond the most bytes.
class text_buffer {
public:
  static constexpr std::size_t most_bytes = std::size_t{256} << 20;

  text_buffer() = default;
  text_buffer(text_buffer&& other) noexcept
      : begin_(std::exchange(other.begin_, nullptr)), end_(std::exchange(other.end_, nullptr)),
        limit_(std::exchange(other.limit_, nullptr)) {}
  text_buffer& operator=(text_buffer&&) = delete;
  ~text_buffer() { std::free(begin_); }

  // Inlined, so that parts of a known length are copied without a call.
  template <class... Part>
  [[gnu::always_inline]] void append(const Part&... parts) {
    append_parts(std::string_view(parts)...);
  }
  void append_repeated(std::size_t count, char character) {
    std::memset(room_for(count), character, count);
    end_ += count;
  }

  // In decimal, whatever the locale of the host process.
  void append_number(std::uint64_t number);
  void append_number(std::int64_t number);
  // Six significant digits, as a stream prints by default.
  void append_number(double number);

  // Room for that many characters at the end, which is told by end_at() when they have been written.
  char* room_for(std::size_t count) {
    if (static_cast<std::size_t>(limit_ - end_) < count)
      reserve(count);
    return end_;
  }
  void end_at(char* end) { end_ = end; }

  void clear() { end_ = begin_; }
  // Of a text that is not empty.
  void remove_last() { --end_; }
  std::string_view view() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }
  // The text, closed by a zero, to be freed by whoever gets it.
  char* release() {
    *room_for(1) = '\0';
    end_ = limit_ = nullptr;
    return std::exchange(begin_, nullptr);
  }

private:
  template <class... View>
  [[gnu::always_inline]] void append_parts(View... parts) {
    char* end = room_for((parts.size() + ...));
    ((end += parts.copy(end, parts.size())), ...);
    end_ = end;
  }

  void reserve(std::size_t count);

  // Where the text begins and ends, and where its memory does. Null until the first room is taken.
  char* begin_ = nullptr;
  char* end_ = nullptr;
  char* limit_ = nullptr;
};

} // namespace oryn::tarva::library

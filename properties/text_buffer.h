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
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  text_buffer& operator=(text_buffer&&) = delete;
  ~text_buffer() { std::free(data_); }

  // Inlined, so that parts of a known length are copied without a call.
  template <class... Part>
  [[gnu::always_inline]] void append(const Part&... parts) {
    append_parts(std::string_view(parts)...);
  }
  void append_repeated(std::size_t count, char character) {
    std::memset(room_for(count), character, count);
    size_ += count;
  }

  // In decimal, whatever the locale of the host process.
  void append_number(std::uint64_t number);
  void append_number(std::int64_t number);
  // Six significant digits, as a stream prints by default.
  void append_number(double number);

  // Room for that many characters at the end; how many of them were written is told by grow().
  char* room_for(std::size_t count) {
    if (capacity_ - size_ < count)
      reserve(count);
    return data_ + size_;
  }
  void grow(std::size_t count) { size_ += count; }

  void clear() { size_ = 0; }
  // Of a text that is not empty.
  void remove_last() { --size_; }
  std::string_view view() const { return {data_, size_}; }
  // The text, closed by a zero, to be freed by whoever gets it.
  char* release() {
    *room_for(1) = '\0';
    size_ = capacity_ = 0;
    return std::exchange(data_, nullptr);
  }

private:
  template <class... View>
  [[gnu::always_inline]] void append_parts(View... parts) {
    char* end = room_for((parts.size() + ...));
    ((end += parts.copy(end, parts.size())), ...);
    size_ = static_cast<std::size_t>(end - data_);
  }

  void reserve(std::size_t count);

  // Null until the first room is taken.
  char* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

} // namespace oryn::tarva::library

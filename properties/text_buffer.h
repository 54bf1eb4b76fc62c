#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace oryn::tarva::library {

// A text that grows at its end, in memory of malloc, so that the caller of a C interface can have it as it is.
class text_buffer {
public:
  text_buffer() = default;
  text_buffer(text_buffer&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  text_buffer& operator=(text_buffer&&) = delete;
  ~text_buffer() { std::free(data_); }

  // Inlined, so that pieces of a known length are copied without a call.
  template <typename... piece>
  [[gnu::always_inline]] void append(const piece&... pieces) {
    append_pieces(std::string_view(pieces)...);
  }
  void append_repeated(std::size_t count, char character) {
    std::memset(room_for(count), character, count);
    size_ += count;
  }

  // Room for that many characters at the end; how many of them were written is told by grow().
  char* room_for(std::size_t count) {
    if (capacity_ - size_ < count)
      reserve(count);
    return data_ + size_;
  }
  void grow(std::size_t count) { size_ += count; }

  void clear() { size_ = 0; }
  void remove_last() { --size_; }
  std::string_view view() const { return {data_, size_}; }
  // The text, closed by a zero, to be freed by whoever gets it.
  char* release() {
    *room_for(1) = '\0';
    size_ = capacity_ = 0;
    return std::exchange(data_, nullptr);
  }

private:
  template <typename... view>
  [[gnu::always_inline]] void append_pieces(view... pieces) {
    char* end = room_for((pieces.size() + ...));
    ((end += pieces.copy(end, pieces.size())), ...);
    size_ = static_cast<std::size_t>(end - data_);
  }

  void reserve(std::size_t count);

  char* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

} // namespace oryn::tarva::library

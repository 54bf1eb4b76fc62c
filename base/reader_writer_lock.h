#pragma once

#include <array>
#include <cstddef>
#include <mutex>

namespace oryn::tarva::library {

// A distributed reader-writer lock: a reader takes one of several mutexes, a writer takes all of them. With
// std::shared_mutex all readers would share the cache line of one counter, and many readers could keep a writer out for
// very long.
//
// A writer treats it as a mutex, with std::lock_guard or std::unique_lock. No thread takes it twice at a time.
class reader_writer_lock {
public:
  using shared_guard = std::lock_guard<std::mutex>;

  // At a time; a further one waits for one of these. Each costs every writer a mutex, 13 ns, twice in every read or write
  // of memory, while a look-up holds its own for about as long: two are enough for many threads that do real work.
  static constexpr std::size_t most_readers = 2;

  reader_writer_lock() = default;
  reader_writer_lock(const reader_writer_lock&) = delete;
  reader_writer_lock& operator=(const reader_writer_lock&) = delete;

  [[nodiscard]] shared_guard lock_shared() { return {lock_one(), std::adopt_lock}; }

  void lock();
  bool try_lock();
  void unlock();

private:
  std::mutex& lock_one();

  static constexpr std::size_t cache_line = 64;

  struct alignas(cache_line) part {
    std::mutex mutex;
  };

  std::array<part, most_readers> parts_;
};

} // namespace oryn::tarva::library

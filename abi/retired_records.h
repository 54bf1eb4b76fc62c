#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace oryn::tarva::library {

// Keeps the records of ended handles for a while before they are freed, so that malloc does not give the address of a
// handle that has just ended to the next one, and a caller who still uses the old handle is refused.
class retired_records {
public:
  retired_records() = default;
  retired_records(const retired_records&) = delete;
  retired_records& operator=(const retired_records&) = delete;
  ~retired_records() {
    for (void* record : records_)
      std::free(record);
  }

  // Takes `record` and gives back the oldest one, to be freed; null while there is room.
  void* exchange(void* record) noexcept {
    void* oldest = std::exchange(records_[next_], record);
    next_ = (next_ + 1) % records_.size();
    return oldest;
  }

  bool contains(const void* record) const noexcept {
    return std::find(records_.begin(), records_.end(), record) != records_.end();
  }

private:
  std::array<void*, 1024> records_{};
  std::size_t next_ = 0;
};

} // namespace oryn::tarva::library

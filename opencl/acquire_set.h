// What one device has been told by others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <tuple>
#include <vector>

namespace oryn::tarva::library {
class library_device;
}

namespace oryn::tarva::library::device_ir {

class synchronization_acquire;

// The signals that the releases of other devices have sent to one device, each until its acquire takes it. A signal counts
// only once the worker has taken it over, so that what it sees does not change in the middle of a sweep. No lock of its own:
// the dispatcher's guards it.
class acquire_set {
public:
  using key = std::tuple<std::shared_ptr<library_device>, std::shared_ptr<library_device>, std::uint64_t>;
  static key key_of(const synchronization_acquire& acquire);

  // For `acquires` more acquires than before. Their signals then need no memory any more, on whichever thread they come.
  void reserve_for(std::size_t acquires);
  // An equal signal that is there already stays the only one.
  void add(const key& signal);
  bool has_new() const;
  void take_over();
  // Of the signals that have been taken over.
  bool contains(const key& signal) const;
  void remove(const key& signal);
  void clear() { signals_.clear(); }

private:
  struct entry {
    key signal;
    bool is_taken_over = false;
  };

  std::vector<entry>::const_iterator find(const key& signal) const;

  std::vector<entry> signals_;
  std::size_t expected_ = 0;
};

} // namespace oryn::tarva::library::device_ir

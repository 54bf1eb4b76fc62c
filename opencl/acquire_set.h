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

// The signals that other devices have sent to one, each until its acquire takes it. One that has just come does not
// count before it has been taken over.
class acquire_set {
public:
  using key = std::tuple<std::shared_ptr<library_device>, std::shared_ptr<library_device>, std::uint64_t>;
  static key key_of(const synchronization_acquire& acquire);

  // Makes room for the signals of so many more acquires: none of what follows takes memory for theirs.
  void expect(std::size_t acquires);
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

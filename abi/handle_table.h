#pragma once

#include "abi/handle_traits.h"
#include "base/address_map.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

class property_interface;

// What the bridge knows of one handle. A handle without counted references has exactly one owner.
template <typename record>
struct handle_entry {
  std::shared_ptr<object_of<record>> object;
  std::uint64_t count = 1;
};

template <>
struct handle_entry<tarva_abi_property_s> {
  // The property's strings and values may depend on its owner, so the owner lives as long as the handle. It
  // goes last.
  std::shared_ptr<property_interface> owner;
  std::shared_ptr<property_base> object;
};

struct record_deleter {
  void operator()(void* memory) const noexcept { std::free(memory); }
};
template <typename record>
using record_ptr = std::unique_ptr<record, record_deleter>;

// Memory that the caller will hold.
template <typename record>
record_ptr<record> allocate_records(std::size_t count = 1) {
  // NOLINTBEGIN(bugprone-sizeof-expression): an array of pointers is asked for, too
  if (count > std::numeric_limits<std::size_t>::max() / sizeof(record))
    throw std::bad_alloc();
  auto* memory = static_cast<record*>(std::malloc(count * sizeof(record)));
  // NOLINTEND(bugprone-sizeof-expression)
  if (!memory)
    throw std::bad_alloc();
  return record_ptr<record>(memory);
}

// The live handles of one kind. An address that is not in the table is never followed. Not locked: the bridge
// is. Readers look up and count, so counts change in atomic steps; all else is a writer's.
//
// Each handle has an entry of its own, also if its object has several, so that each of them ends by itself.
template <typename record>
class handle_table {
public:
  using record_type = record;
  using entry = handle_entry<record>;
  using node = std::optional<entry>;

  bool contains(const void* handle) const { return entries_.find(handle) != nullptr; }

  const entry& look_up(const record* handle) const {
    const entry* found = entries_.find(handle);
    if (found == nullptr)
      throw std::runtime_error("Lookup of internal type map failed.");
    return *found;
  }

  // Takes the content of `new_entry`. An address can be there already only if the caller has freed the record
  // behind the library's back; `new_entry` then holds what was there, to be dropped after the unlock.
  void insert(const record* handle, entry& new_entry) {
    const auto [found, is_new] = entries_.try_emplace(handle, std::move(new_entry));
    if (is_new)
      return;
    if constexpr (counted_handle<record>)
      throw std::runtime_error("ABI type has a non-zero reference count, so it cannot be initialized again.");
    else
      std::swap(*found, new_entry);
  }

  void retain(const record* handle) requires counted_handle<record> {
    const std::atomic_ref count(counted(handle).count);
    std::uint64_t before = count;
    do {
      if (before == std::numeric_limits<std::uint64_t>::max())
        throw std::runtime_error("Reference count increment would overflow.  This should be impossible.");
    } while (!count.compare_exchange_weak(before, before + 1));
  }

  // False, with nothing changed, if the reference is the last one.
  bool release_unless_last(const record* handle) requires counted_handle<record> {
    const std::atomic_ref count(counted(handle).count);
    std::uint64_t before = count;
    do {
      if (before == 0)
        throw std::runtime_error("Reference count is zero. This should be impossible.");
      if (before == 1)
        return false;
    } while (!count.compare_exchange_weak(before, before - 1));
    return true;
  }

  // The last reference yields the entry, so that the caller can drop it after the unlock.
  node release(const record* handle) requires counted_handle<record> {
    if (release_unless_last(handle))
      return {};
    return entries_.extract(handle);
  }

  node remove(const record* handle) requires(!counted_handle<record>) {
    node removed = entries_.extract(handle);
    if (!removed)
      throw std::runtime_error(handle_traits<record>::unknown_message);
    return removed;
  }

  template <typename visitor>
  void for_each(visitor&& visit) const {
    entries_.for_each(std::forward<visitor>(visit));
  }

  void set_count(const record* handle, std::uint64_t count) requires counted_handle<record> {
    counted(handle).count = count;
  }

private:
  entry& counted(const record* handle) {
    entry* found = entries_.find(handle);
    if (found == nullptr)
      throw std::runtime_error("ABI type argument is not found.");
    return *found;
  }

  address_map<entry> entries_;
};

} // namespace oryn::tarva::library

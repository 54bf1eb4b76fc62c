// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The bridge's parts: what it knows of one handle, the table of all live handles of one kind, and the quarantine of records
// whose handle has ended.
#pragma once

#include "abi/handle_kinds.h"
#include "base/address_map.h"

#include <algorithm>
#include <array>
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

// What the bridge knows of one handle. The count is that of the caller's references; a handle whose references are not
// counted keeps 1.
template <class Record>
struct handle_entry {
  std::shared_ptr<object_of<Record>> object;
  std::uint64_t count = 1;
};

// The property's strings and values may depend on its owner. The owner therefore lives as long as the handle, and is
// destroyed after the property.
template <>
struct handle_entry<tarva_abi_property_s> {
  std::shared_ptr<property_interface> owner;
  std::shared_ptr<property_base> object;
};

// Records are the caller's memory, and so from malloc.
struct record_deleter {
  void operator()(void* memory) const noexcept { std::free(memory); }
};
// A record that the caller will own; until then it frees itself.
template <class Record>
using record_ptr = std::unique_ptr<Record, record_deleter>;

// From malloc, as the interface promises. Throws std::bad_alloc.
template <class Record>
record_ptr<Record> allocate_records(std::size_t count = 1) {
  // NOLINTBEGIN(bugprone-sizeof-expression): an array of pointers is asked for, too
  if (count > std::numeric_limits<std::size_t>::max() / sizeof(Record))
    throw std::bad_alloc();
  auto* memory = static_cast<Record*>(std::malloc(count * sizeof(Record)));
  // NOLINTEND(bugprone-sizeof-expression)
  if (!memory)
    throw std::bad_alloc();
  return record_ptr<Record>(memory);
}

// The live handles of one kind, by address. An address that is not in the table is never followed. Each handle has an
// entry of its own, also if several name one object, so that each of them ends by itself.
//
// What throws has changed nothing.
template <class Record>
class handle_table {
public:
  using record_type = Record;
  using entry = handle_entry<Record>;
  // What was removed, so that the caller can destroy it after the unlock.
  using removed_entry = std::optional<entry>;

  bool contains(const void* handle) const { return entries_.find(handle) != nullptr; }

  // The entry is valid until the table changes, which it cannot under the lock of its part.
  const entry& look_up(const Record* handle) const {
    const entry* found = entries_.find(handle);
    if (found == nullptr)
      throw std::runtime_error("Lookup of internal type map failed.");
    return *found;
  }

  // Takes the content of `new_entry`. An address can be there already only if the caller has freed the record on its own.
  // The stale entry of a counted handle is an error; that of another is put into `new_entry`, to be destroyed there.
  void insert(const Record* handle, entry& new_entry) {
    const auto [found, is_new] = entries_.try_emplace(handle, std::move(new_entry));
    if (is_new)
      return;
    if constexpr (counted_handle<Record>)
      throw std::runtime_error("ABI type has a non-zero reference count, so it cannot be initialized again.");
    else
      std::swap(*found, new_entry);
  }

  // No count wraps around.
  void retain(const Record* handle) requires counted_handle<Record> {
    std::uint64_t& count = counted(handle).count;
    if (count == std::numeric_limits<std::uint64_t>::max())
      throw std::runtime_error("Reference count increment would overflow.  This should be impossible.");
    ++count;
  }

  // Removes the entry if the reference was the last one; nothing if it was not.
  removed_entry release(const Record* handle) requires counted_handle<Record> {
    std::uint64_t& count = counted(handle).count;
    if (count == 0)
      throw std::runtime_error("Reference count is zero. This should be impossible.");
    if (count == 1)
      return entries_.extract(handle);
    --count;
    return {};
  }

  // For handles with one owner.
  removed_entry remove(const Record* handle) requires(!counted_handle<Record>) {
    removed_entry removed = entries_.extract(handle);
    if (!removed)
      throw std::runtime_error(handle_traits<Record>::unknown_message);
    return removed;
  }

  // In no particular order.
  template <class Visitor>
  void for_each(Visitor&& visit) const {
    entries_.for_each(std::forward<Visitor>(visit));
  }

private:
  // The words differ from those of look_up(): they tell that a reference was to be counted.
  entry& counted(const Record* handle) {
    entry* found = entries_.find(handle);
    if (found == nullptr)
      throw std::runtime_error("ABI type argument is not found.");
    return *found;
  }

  address_map<entry> entries_;
};

// Holds the records of ended handles for a while before they are freed. Otherwise malloc would give the address of a handle
// that has just ended to the next one, and a caller who still uses the old handle would not be refused. Any thread, without a
// lock.
class record_quarantine {
public:
  record_quarantine() = default;
  record_quarantine(const record_quarantine&) = delete;
  record_quarantine& operator=(const record_quarantine&) = delete;
  ~record_quarantine() {
    for (const auto& record : records_)
      std::free(record);
  }

  // Takes `record` and gives back the oldest one, to be freed after the unlock; null while there is room.
  void* exchange(void* record) noexcept { return records_[next_++ % records_.size()].exchange(record); }

  bool contains(const void* record) const noexcept {
    return std::find(records_.begin(), records_.end(), record) != records_.end();
  }

private:
  std::array<std::atomic<void*>, 1024> records_{}; // a ring: the oldest is at next_
  std::atomic<std::size_t> next_ = 0;
};

} // namespace oryn::tarva::library

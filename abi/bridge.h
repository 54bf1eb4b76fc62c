// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The bridge between the caller's handles and the library's shared objects.
#pragma once

#include "abi/handle_table.h"
#include "base/thread_annotations.h"
#include "properties/data_type.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace oryn::tarva::library {

// The one place where handles and objects meet. It owns a share of each object that has a live handle, and the records of
// handles that have ended; records of live handles are the caller's. The one bridge belongs to the singleton, and every
// call uses it on its own thread, never a worker.
//
// The tables are cut into many small parts by the address of the handle, each with a lock of its own. So calls with different
// handles hardly ever meet, and a table that grows or shrinks holds up few calls, for a fraction of a millisecond, however
// many handles there are. All that is known of one address, of whatever kind, is in one part. Whoever holds a lock calls no
// library object and destroys none, so objects that leave the tables are destroyed after the unlock. The only
// lock that is ever taken while one of these is held is a logger's, by the leak report.
//
// A handle that is null, unknown or of the wrong kind is refused with std::runtime_error, and is never followed. What
// throws has changed nothing.
class abi_bridge {
public:
  // A property, and the object whose values it shows.
  struct owned_property {
    std::shared_ptr<property_base> property;
    std::shared_ptr<property_interface> owner;
  };

  abi_bridge() = default;
  abi_bridge(const abi_bridge&) = delete;
  abi_bridge& operator=(const abi_bridge&) = delete;
  ~abi_bridge() { teardown(); }

  // For threads that are at work in the tables when the teardown begins.
  static constexpr std::chrono::milliseconds grace_period_of_tables{1000};

  template <class Record>
  std::shared_ptr<object_of<Record>> get_library_object(const Record* handle) const {
    part& own = part_of(handle);
    const lock_guard guard(own.lock);
    return own.template table<Record>().look_up(handle).object;
  }
  owned_property get_property_and_owner(const tarva_abi_property_s* handle) const;

  // A new handle with one reference, also if the object has a handle already.
  template <class Record>
  Record* make_handle(std::shared_ptr<object_of<Record>> object);
  // A record that shows the property. The handle keeps the property alive, and its owner.
  tarva_abi_property_s* make_property_handle(std::shared_ptr<property_base> property,
                                             std::shared_ptr<property_interface> owner);
  // If one handle cannot be made, those made before it end again.
  tarva_abi_device_array_s* make_device_array(const std::vector<std::shared_ptr<library_device>>& devices);
  // If one handle cannot be made the array comes back all the same, with NULL for every handle.
  tarva_abi_property_array_s* make_property_array(const std::vector<owned_property>& properties);

  // One more reference, and one less.
  template <counted_handle Record>
  void retain(const Record* handle);
  // True if this release ended the handle.
  template <counted_handle Record>
  bool release(Record* handle);

  // The others have one owner, who ends them once.
  void release_future(tarva_abi_future_s* handle);
  // Ends a handle that was made but not given to the caller. A caller who uses an old handle of the same address may have
  // ended it before.
  void withdraw_future(tarva_abi_future_s* handle);
  // Null is allowed in these two.
  void release_error(tarva_abi_error_s* handle);
  void release_property(tarva_abi_property_s* handle);

  // Reports every handle that was not given up, and drops what the tables hold. The records are not freed: a caller may
  // still have their addresses. If a thread holds a lock beyond the grace period, the tables are read all the same, but
  // not changed. A second teardown finds nothing.
  void teardown();

private:
  friend struct abi_bridge_test_access;

  using handle_tables = std::tuple<handle_table<tarva_abi_device_s>, handle_table<tarva_abi_program_s>,
                                   handle_table<tarva_abi_kernel_s>, handle_table<tarva_abi_memory_s>,
                                   handle_table<tarva_abi_property_s>, handle_table<tarva_abi_future_s>,
                                   handle_table<tarva_abi_error_s>>;

  struct alignas(64) part { // on cache lines of its own
    template <class Record>
    handle_table<Record>& table() TARVA_REQUIRES(lock) {
      return std::get<handle_table<Record>>(tables);
    }
    // Refuses null and live handles of other kinds, for kinds of handle that have words for that.
    template <class Record>
    void test_kind(const Record* handle) TARVA_REQUIRES(lock);

    mutex lock;
    handle_tables tables TARVA_GUARDED_BY(lock);
  };
  // At ten million handles a part that grows moves 12,000 entries or so, in a quarter of a millisecond.
  static constexpr unsigned part_bits = 9;
  static constexpr std::size_t part_count = std::size_t{1} << part_bits;

  // By other bits of the product than those that choose the place within a table.
  part& part_of(const void* handle) const {
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(handle));
    return parts_[address * 0x9E3779B97F4A7C15U >> 32 & (part_count - 1)];
  }

  // Puts a new record into its table.
  template <class Record>
  Record* store(record_ptr<Record> handle, handle_entry<Record> new_entry);
  // Ends a handle that has one owner.
  template <class Record>
  void remove(Record* handle);
  template <class Record>
  void report_leaks_of(bool under_locks) const;
  void report_leaks(bool under_locks) const;
  // False if another thread has held one of the locks for the whole grace period.
  bool are_locks_free_within_grace_period() const;

  const std::unique_ptr<part[]> parts_ = std::make_unique<part[]>(part_count);
  record_quarantine quarantine_;
  std::atomic<bool> is_torn_down_ = false;
};

// The library's enumerators have the interface's values. What is none of them is refused with std::runtime_error.
inline data_type to_data_type(tarva_abi_data_type value) {
  if (value < TARVA_ABI_TYPE_STRING || value > TARVA_ABI_TYPE_DOUBLE16)
    throw std::runtime_error("Unknown data type.");
  return static_cast<data_type>(value);
}
std::uint64_t to_ir_type(tarva_abi_ir_type value);

// A copy for the caller, from malloc. Throws std::bad_alloc.
char* copy_string(const std::string& text);

} // namespace oryn::tarva::library

// The bridge between the caller's handles and the library's shared objects.
#pragma once

#include "abi/handle_table.h"
#include "base/reader_writer_lock.h"
#include "base/thread_annotations.h"
#include "properties/data_type.h"

#include <chrono>
#include <string>
#include <tuple>
#include <vector>

namespace oryn::tarva::library {

// The one place where handles and objects meet. It owns a share of each object that has a live handle, and the records of
// handles that have ended; records of live handles are the caller's. The one bridge belongs to the singleton, and every
// call uses it on its own thread, never a worker.
//
// One lock guards all tables and nothing else. Look-ups and counting are readers, several of which go on side by side;
// making and ending a handle are writers. Whoever holds it calls no library object and destroys none, so objects that leave
// the tables are destroyed after the unlock. It is the first of the lock order: bridge, scheduler, dispatcher, completion
// state, logger. In fact the only lock that is ever taken while it is held is a logger's, by the leak report.
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

  // Looks up any number of handles under one lock, which it holds while it lives.
  class TARVA_LOCK_HOLDER_CLASS reading {
  public:
    explicit reading(const abi_bridge& bridge) TARVA_ACQUIRE_SHARED(bridge.lock_)
        : bridge_(bridge), guard_(bridge.lock_) {}
    ~reading() TARVA_RELEASE() = default;

    // Not analysed, since the analysis does not know that the lock of the constructor is that of the member.
    template <class Record>
    const std::shared_ptr<object_of<Record>>&
    get_library_object(const Record* handle) const TARVA_NOT_ANALYSED {
      return bridge_.table<Record>().look_up(handle).object;
    }

  private:
    const abi_bridge& bridge_;
    const reader_writer_lock::shared_guard guard_;
  };

  template <class Record>
  std::shared_ptr<object_of<Record>> get_library_object(const Record* handle) const TARVA_EXCLUDES(lock_) {
    const reader_writer_lock::shared_guard guard(lock_);
    return table<Record>().look_up(handle).object;
  }
  owned_property get_property_and_owner(const tarva_abi_property_s* handle) const TARVA_EXCLUDES(lock_);

  // A new handle with one reference, also if the object has a handle already.
  template <class Record>
  Record* make_handle(std::shared_ptr<object_of<Record>> object) TARVA_EXCLUDES(lock_);
  // A record that shows the property. The handle keeps the property alive, and its owner.
  tarva_abi_property_s* make_property_handle(std::shared_ptr<property_base> property,
                                             std::shared_ptr<property_interface> owner) TARVA_EXCLUDES(lock_);
  // If one handle cannot be made, those made before it end again.
  tarva_abi_device_array_s* make_device_array(const std::vector<std::shared_ptr<library_device>>& devices);
  // If one handle cannot be made the array comes back all the same, with NULL for every handle.
  tarva_abi_property_array_s* make_property_array(const std::vector<owned_property>& properties);

  // One more reference, and one less. Most of them are readers of the lock; a last release is a writer.
  template <counted_handle Record>
  void retain(const Record* handle) TARVA_EXCLUDES(lock_);
  // True if this release ended the handle.
  template <counted_handle Record>
  bool release(Record* handle) TARVA_EXCLUDES(lock_);

  // The others have one owner, who ends them once.
  void release_future(tarva_abi_future_s* handle) TARVA_EXCLUDES(lock_);
  // Ends a handle that was made but not given to the caller. A caller who uses an old handle of the same address may have
  // ended it before.
  void withdraw_future(tarva_abi_future_s* handle) TARVA_EXCLUDES(lock_);
  // Null is allowed in these two.
  void release_error(tarva_abi_error_s* handle) TARVA_EXCLUDES(lock_);
  void release_property(tarva_abi_property_s* handle) TARVA_EXCLUDES(lock_);

  // Reports every handle that was not given up, and drops what the tables hold. The records are not freed: a caller may
  // still have their addresses. If a thread holds the lock beyond the grace period, the tables are read all the same, but
  // not changed. A second teardown finds nothing.
  void teardown() TARVA_EXCLUDES(lock_);

private:
  friend struct abi_bridge_test_access;

  using handle_tables = std::tuple<handle_table<tarva_abi_device_s>, handle_table<tarva_abi_program_s>,
                                   handle_table<tarva_abi_kernel_s>, handle_table<tarva_abi_memory_s>,
                                   handle_table<tarva_abi_property_s>, handle_table<tarva_abi_future_s>,
                                   handle_table<tarva_abi_error_s>>;

  template <class Record>
  handle_table<Record>& table() TARVA_REQUIRES_SHARED(lock_) {
    return std::get<handle_table<Record>>(tables_);
  }
  template <class Record>
  const handle_table<Record>& table() const TARVA_REQUIRES_SHARED(lock_) {
    return std::get<handle_table<Record>>(tables_);
  }

  // Puts a new record into its table.
  template <class Record>
  Record* store(record_ptr<Record> handle, handle_entry<Record> new_entry) TARVA_EXCLUDES(lock_);
  // Ends a handle that has one owner.
  template <class Record>
  void remove(Record* handle) TARVA_EXCLUDES(lock_);
  // Refuses null and live handles of other kinds, for kinds of handle that have words for that.
  template <class Record>
  void test_kind(const Record* handle) const TARVA_REQUIRES_SHARED(lock_);
  void report_leaks() const TARVA_REQUIRES_SHARED(lock_);
  // False if another thread has held the lock for the whole grace period.
  bool lock_within_grace_period() TARVA_TRY_ACQUIRE(true, lock_);

  mutable reader_writer_lock lock_;

  // All that the lock guards.
  handle_tables tables_ TARVA_GUARDED_BY(lock_);
  record_quarantine quarantine_ TARVA_GUARDED_BY(lock_);
  bool is_torn_down_ TARVA_GUARDED_BY(lock_) = false;
};

// The library's enumerators have the interface's values. What is none of them is refused with std::runtime_error.
data_type to_data_type(tarva_abi_data_type value);
std::uint64_t to_ir_type(tarva_abi_ir_type value);

// A copy for the caller, from malloc. Throws std::bad_alloc.
char* copy_string(const std::string& text);

} // namespace oryn::tarva::library

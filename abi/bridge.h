#pragma once

#include "abi/handle_table.h"
#include "abi/retired_records.h"
#include "base/reader_writer_lock.h"
#include "properties/data_type.h"

#include <chrono>
#include <string>
#include <tuple>
#include <vector>

namespace oryn::tarva::library {

// The one place where the caller's handles and the library's shared objects meet. One lock covers all tables
// and nothing else: no library object is called, and none is destroyed, while it is held. Look-ups and counting are
// readers: a few of them go on side by side.
class abi_bridge {
public:
  struct owned_property {
    std::shared_ptr<property_base> property;
    std::shared_ptr<property_interface> owner;
  };

  abi_bridge() = default;
  abi_bridge(const abi_bridge&) = delete;
  abi_bridge& operator=(const abi_bridge&) = delete;
  ~abi_bridge() { teardown(); }

  // How long the teardown waits for whoever is at work in the tables.
  static constexpr std::chrono::milliseconds patience_with_tables{1000};

  // Looks up any number of handles under one lock.
  class reading {
  public:
    explicit reading(const abi_bridge& bridge) : bridge_(bridge), guard_(bridge.lock_.lock_shared()) {}

    template <typename record>
    const std::shared_ptr<object_of<record>>& get_library_object(const record* handle) const {
      return bridge_.table<record>().look_up(handle).object;
    }

  private:
    const abi_bridge& bridge_;
    const reader_writer_lock::shared_guard guard_;
  };

  template <typename record>
  std::shared_ptr<object_of<record>> get_library_object(const record* handle) const {
    return reading(*this).get_library_object(handle);
  }
  owned_property get_property_and_owner(const tarva_abi_property_s* handle) const;

  template <typename record>
  record* make_handle(std::shared_ptr<object_of<record>> object);
  tarva_abi_property_s* make_property_handle(std::shared_ptr<property_base> property,
                                             std::shared_ptr<property_interface> owner);
  tarva_abi_device_array_s* make_device_array(const std::vector<std::shared_ptr<library_device>>& devices);
  // If one handle cannot be made the array comes back all the same, with NULL for every handle.
  tarva_abi_property_array_s* make_property_array(const std::vector<owned_property>& properties);

  template <counted_handle record>
  void retain(const record* handle);
  // True if this release ended the handle.
  template <counted_handle record>
  bool release(record* handle);
  void release_future(tarva_abi_future_s* handle);
  // For one that its maker does not hand out. By an old handle of the same address, somebody may have ended it before.
  void withdraw_future(tarva_abi_future_s* handle);
  void release_error(tarva_abi_error_s* handle);
  void release_property(tarva_abi_property_s* handle);

  // Reports every handle that was not given up, and drops what the tables hold. The records stay: a caller
  // may still have their addresses. If somebody keeps the tables for too long, they are read all the same, but stay as
  // they are.
  void teardown();

private:
  friend struct abi_bridge_test_access;

  using handle_tables = std::tuple<handle_table<tarva_abi_device_s>, handle_table<tarva_abi_program_s>,
                                   handle_table<tarva_abi_kernel_s>, handle_table<tarva_abi_memory_s>,
                                   handle_table<tarva_abi_property_s>, handle_table<tarva_abi_future_s>,
                                   handle_table<tarva_abi_error_s>>;

  template <typename record>
  handle_table<record>& table() {
    return std::get<handle_table<record>>(tables_);
  }
  template <typename record>
  const handle_table<record>& table() const {
    return std::get<handle_table<record>>(tables_);
  }

  template <typename record>
  record* store(record_ptr<record> handle, handle_entry<record> new_entry);
  template <typename record>
  void remove(record* handle);
  // With the lock held, by a reader at least.
  template <typename record>
  void test_kind(const record* handle) const;
  void report_leaks() const;

  mutable reader_writer_lock lock_;
  handle_tables tables_;
  retired_records retired_;
  bool is_torn_down_ = false;
};

// The library's enumerators have the interface's values.
data_type to_data_type(tarva_abi_data_type value);
std::uint64_t to_ir_type(tarva_abi_ir_type value);

// A copy for the caller, from malloc.
char* copy_string(const std::string& text);

} // namespace oryn::tarva::library

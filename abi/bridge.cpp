// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "abi/bridge.h"

#include "base/end_of_process.h"
#include "base/logging.h"
#include "properties/property.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace oryn::tarva::library {

namespace {

// The opaque record of a handle. Its address is what the caller gets.
template <class Record>
record_ptr<Record> new_record() {
  auto handle = allocate_records<Record>();
  handle->kind = handle_traits<Record>::kind;
  return handle;
}

// The public record of a property. Its strings and its value are the property's own, which lives as long as the handle.
record_ptr<tarva_abi_property_s> describe(const property_base& property) {
  auto handle = new_record<tarva_abi_property_s>();
  handle->name = property.get_name_pointer();
  handle->friendly_name = property.get_friendly_name_pointer();
  handle->description = property.get_description_pointer();
  const bool has_data = property.has_data();
  handle->has_data = has_data ? 1 : 0;
  handle->data_type = has_data ? static_cast<std::uint64_t>(property.get_data_type())
                               : std::numeric_limits<std::uint64_t>::max();
  handle->element_count = has_data ? property.get_element_count() : 0;
  handle->data = has_data ? property.get_data() : nullptr;
  return handle;
}

// `count` pointers of a handle array, all NULL; none for no handles.
template <class Record>
record_ptr<Record*> new_pointers(std::size_t count) {
  if (count == 0)
    return nullptr;
  auto pointers = allocate_records<Record*>(count);
  std::fill_n(pointers.get(), count, nullptr);
  return pointers;
}

} // namespace

abi_bridge::owned_property abi_bridge::get_property_and_owner(const tarva_abi_property_s* handle) const {
  part& own = part_of(handle);
  const lock_guard guard(own.lock);
  const handle_entry<tarva_abi_property_s>& found = own.table<tarva_abi_property_s>().look_up(handle);
  return {found.object, found.owner};
}

// The record frees itself if the table has no room for it. Then nobody has seen its address.
template <class Record>
Record* abi_bridge::store(record_ptr<Record> handle, handle_entry<Record> new_entry) {
  {
    part& own = part_of(handle.get());
    const lock_guard guard(own.lock);
    own.template table<Record>().insert(handle.get(), new_entry);
  }
  return handle.release();
}

template <class Record>
Record* abi_bridge::make_handle(std::shared_ptr<object_of<Record>> object) {
  handle_entry<Record> new_entry;
  new_entry.object = std::move(object);
  return store(new_record<Record>(), std::move(new_entry));
}

tarva_abi_property_s* abi_bridge::make_property_handle(std::shared_ptr<property_base> property,
                                                       std::shared_ptr<property_interface> owner) {
  if (!property || !owner)
    throw std::runtime_error(
        "Expected properties to be non-NULL. This is an internal error, and you should file a bug.");
  auto handle = describe(*property);
  return store(std::move(handle), {std::move(owner), std::move(property)});
}

tarva_abi_device_array_s*
abi_bridge::make_device_array(const std::vector<std::shared_ptr<library_device>>& devices) {
  auto array = allocate_records<tarva_abi_device_array_s>();
  auto pointers = new_pointers<tarva_abi_device_s>(devices.size());
  std::size_t made = 0;
  try {
    for (; made < devices.size(); ++made)
      pointers.get()[made] = make_handle<tarva_abi_device_s>(devices[made]);
  } catch (...) {
    while (made > 0)
      release(pointers.get()[--made]);
    throw;
  }
  array->count = devices.size();
  array->devices = pointers.release();
  return array.release();
}

// Without one of the handles the caller gets an array of NULLs, so those that were made end again. If even that fails, the
// tables contradict each other, and nothing that they say can be relied on.
tarva_abi_property_array_s* abi_bridge::make_property_array(const std::vector<owned_property>& properties) {
  auto array = allocate_records<tarva_abi_property_array_s>();
  auto pointers = new_pointers<tarva_abi_property_s>(properties.size());
  std::size_t made = 0;
  try {
    for (; made < properties.size(); ++made)
      pointers.get()[made] = make_property_handle(properties[made].property, properties[made].owner);
  } catch (...) {
    try {
      while (made > 0)
        release_property(std::exchange(pointers.get()[--made], nullptr));
    } catch (...) {
      log_error(
          "Encountered an exception while recovering from another exception.  The library is probably in "
          "an undefined state, so halting execution.");
      fail_process();
    }
  }
  array->count = properties.size();
  array->properties = pointers.release();
  return array.release();
}

// The tables tell the kind of a handle; its record is not read, since it may have been freed long ago.
template <class Record>
void abi_bridge::part::test_kind(const Record* handle) {
  if constexpr (requires { handle_traits<Record>::null_message; }) {
    if (!handle)
      throw std::runtime_error(handle_traits<Record>::null_message);
  }
  if constexpr (requires { handle_traits<Record>::wrong_kind_message; }) {
    const auto is_live = [handle](const auto&... each) { return (each.contains(handle) || ...); };
    if (!table<Record>().contains(handle) && std::apply(is_live, tables))
      throw std::runtime_error(handle_traits<Record>::wrong_kind_message);
  }
}

template <counted_handle Record>
void abi_bridge::retain(const Record* handle) {
  part& own = part_of(handle);
  const lock_guard guard(own.lock);
  own.test_kind(handle);
  own.template table<Record>().retain(handle);
}

// What leaves the table and what leaves the quarantine goes after the unlock: the object may call the bridge at its end, and
// free() would only make the lock longer.

template <counted_handle Record>
bool abi_bridge::release(Record* handle) {
  typename handle_table<Record>::removed_entry ended;
  void* oldest = nullptr;
  {
    part& own = part_of(handle);
    const lock_guard guard(own.lock);
    own.test_kind(handle);
    ended = own.template table<Record>().release(handle);
    if (!ended)
      return false;
    oldest = quarantine_.exchange(handle);
  }
  std::free(oldest);
  return true;
}

template <class Record>
void abi_bridge::remove(Record* handle) {
  typename handle_table<Record>::removed_entry ended;
  void* oldest = nullptr;
  {
    part& own = part_of(handle);
    const lock_guard guard(own.lock);
    own.test_kind(handle);
    ended = own.template table<Record>().remove(handle);
    oldest = quarantine_.exchange(handle);
  }
  std::free(oldest);
}

void abi_bridge::release_future(tarva_abi_future_s* handle) {
  remove(handle);
}

void abi_bridge::withdraw_future(tarva_abi_future_s* handle) {
  try {
    return remove(handle);
  } catch (const std::runtime_error&) {
    // If a caller has ended it, its record is in the quarantine. After a teardown it is nobody's but ours.
    if (is_torn_down_ && !quarantine_.contains(handle))
      std::free(handle);
  }
}

void abi_bridge::release_error(tarva_abi_error_s* handle) {
  if (handle)
    remove(handle);
}

void abi_bridge::release_property(tarva_abi_property_s* handle) {
  if (handle)
    remove(handle);
}

// The counts are those of the caller's references that are still held.
// Not analysed, as it depends on the argument whether the locks are taken.
template <class Record>
void abi_bridge::report_leaks_of(bool under_locks) const TARVA_NOT_ANALYSED {
  for (std::size_t i = 0; i < part_count; ++i) {
    if (under_locks)
      parts_[i].lock.lock();
    std::get<handle_table<Record>>(parts_[i].tables)
        .for_each([](const void* handle, const handle_entry<Record>& leaked) {
          if constexpr (counted_handle<Record>)
            log_warning(handle_traits<Record>::leak_line, handle, leaked.count);
          else
            log_warning(handle_traits<Record>::leak_line, handle);
        });
    if (under_locks)
      parts_[i].lock.unlock();
  }
}

// Kind by kind, in the order of the tables.
void abi_bridge::report_leaks(bool under_locks) const {
  [&]<class... Records>(const std::tuple<handle_table<Records>...>*) {
    (report_leaks_of<Records>(under_locks), ...);
  }(static_cast<const handle_tables*>(nullptr));
}

// Each was free at some time since the teardown began. Nobody holds one for more than a moment, unless the process was ended in
// the middle of it.
bool abi_bridge::are_locks_free_within_grace_period() const {
  using clock = std::chrono::steady_clock;
  const auto end = clock::now() + grace_period_of_tables;
  for (std::size_t i = 0; i < part_count; ++i) {
    mutex& lock = parts_[i].lock;
    while (!lock.try_lock()) { // which has no form with a limit, and this happens once in a process
      if (clock::now() >= end)
        return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    lock.unlock();
  }
  return true;
}

void abi_bridge::teardown() {
  if (!are_locks_free_within_grace_period()) {
    log_critical("ABI bridge internal lock is held during destruction.  Please file a bug.");
    // The report is worth more than the risk: the process ends anyway.
    report_leaks(false);
    return;
  }
  report_leaks(true);
  is_torn_down_ = true;
  for (std::size_t i = 0; i < part_count; ++i) {
    part& each = parts_[i];
    handle_tables dropped; // destroyed after the unlock, since objects may call the bridge at their end
    const lock_guard guard(each.lock);
    std::swap(dropped, each.tables);
  }
}

// Conversions between the interface and the library.

std::uint64_t to_ir_type(tarva_abi_ir_type value) {
  if (value < TARVA_ABI_IR_SOURCE_1_0 || value > TARVA_ABI_IR_DEVICE_BINARY)
    throw std::runtime_error("Unknown IR type.");
  return value;
}

char* copy_string(const std::string& text) {
  auto copy = allocate_records<char>(text.size() + 1);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy.release();
}

// The bridge is used with these kinds of handle only.
template tarva_abi_device_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_device_s>>);
template tarva_abi_program_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_program_s>>);
template tarva_abi_kernel_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_kernel_s>>);
template tarva_abi_memory_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_memory_s>>);
template tarva_abi_future_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_future_s>>);
template tarva_abi_error_s* abi_bridge::make_handle(std::shared_ptr<object_of<tarva_abi_error_s>>);
template void abi_bridge::retain(const tarva_abi_device_s*);
template bool abi_bridge::release(tarva_abi_device_s*);
template void abi_bridge::retain(const tarva_abi_program_s*);
template bool abi_bridge::release(tarva_abi_program_s*);
template void abi_bridge::retain(const tarva_abi_kernel_s*);
template bool abi_bridge::release(tarva_abi_kernel_s*);
template void abi_bridge::retain(const tarva_abi_memory_s*);
template bool abi_bridge::release(tarva_abi_memory_s*);

} // namespace oryn::tarva::library

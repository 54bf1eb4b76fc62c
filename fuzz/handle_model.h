#pragma once

#include "fuzz/input.h"

#include "include/tarva_abi.h"

#include <array>
#include <utility>
#include <vector>

namespace fuzz {

template <class Record>
inline constexpr tarva_abi_object_kind kind_of = TARVA_ABI_OBJECT_PROPERTY;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_device_s> = TARVA_ABI_OBJECT_DEVICE;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_program_s> = TARVA_ABI_OBJECT_PROGRAM;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_kernel_s> = TARVA_ABI_OBJECT_KERNEL;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_memory_s> = TARVA_ABI_OBJECT_MEMORY;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_error_s> = TARVA_ABI_OBJECT_ERROR;
template <>
inline constexpr tarva_abi_object_kind kind_of<tarva_abi_future_s> = TARVA_ABI_OBJECT_FUTURE;

// What the caller holds: the live handles of each kind and the references to each, and every address that was
// a handle once.
class handle_model {
public:
  template <class Record>
  void add(Record* handle) {
    live_[kind_of<Record>].push_back({handle, 1});
    seen_.push_back(handle);
  }

  template <class Record>
  bool is_live(const Record* handle) {
    return find(kind_of<Record>, handle) != nullptr;
  }
  // False if there is no such handle, so that the library has to refuse as well.
  template <class Record>
  bool retain(const Record* handle) {
    entry* const found = find(kind_of<Record>, handle);
    if (found)
      ++found->references;
    return found != nullptr;
  }
  template <class Record>
  void release(const Record* handle) {
    auto& all = live_[kind_of<Record>];
    entry* const found = find(kind_of<Record>, handle);
    if (found && --found->references == 0)
      all.erase(all.begin() + (found - all.data()));
  }

  // A live handle of the kind if there is one; now and then one of another kind, one that has ended, or an
  // address that never was one.
  template <class Record>
  Record* pick(input& from) {
    auto& all = live_[kind_of<Record>];
    if (!all.empty() && !from.rarely(8))
      return static_cast<Record*>(all[from.below(all.size())].handle);
    if (!seen_.empty() && !from.rarely(3))
      return static_cast<Record*>(seen_[from.below(seen_.size())]);
    return from.rarely(2) ? reinterpret_cast<Record*>(&no_handle_) : nullptr;
  }
  template <class Record>
  Record* any_live() {
    auto& all = live_[kind_of<Record>];
    return all.empty() ? nullptr : static_cast<Record*>(all.back().handle);
  }

private:
  struct entry {
    void* handle;
    std::uint64_t references;
  };

  entry* find(tarva_abi_object_kind kind, const void* handle) {
    for (entry& one : live_[kind])
      if (one.handle == handle)
        return &one;
    return nullptr;
  }

  std::array<std::vector<entry>, 7> live_;
  std::vector<void*> seen_;
  std::uint64_t no_handle_ = 0;
};

} // namespace fuzz

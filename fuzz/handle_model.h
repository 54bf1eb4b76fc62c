// The handles that a caller holds, as far as a caller can know.
#pragma once

#include "fuzz/input.h"

#include <algorithm>
#include <tarva_abi.h>
#include <tuple>
#include <vector>

namespace fuzz {

// What the caller holds: the live handles of each kind and the references to each, and every address that was
// a handle once.
class handle_model {
public:
  template <class Record>
  void add(Record* handle) {
    live<Record>().push_back({handle, 1});
    seen_.push_back(handle);
  }

  template <class Record>
  bool is_live(const Record* handle) {
    return find(handle) != live<Record>().end();
  }
  // Does nothing if there is no such handle, so that the library has to refuse as well.
  template <class Record>
  void retain(const Record* handle) {
    if (const auto found = find(handle); found != live<Record>().end())
      ++found->references;
  }
  template <class Record>
  void release(const Record* handle) {
    if (const auto found = find(handle); found != live<Record>().end() && --found->references == 0)
      live<Record>().erase(found);
  }

  // A live handle of the kind if there is one; now and then one of another kind, one that has ended, or an
  // address that never was one.
  template <class Record>
  Record* pick(input& from) {
    auto& all = live<Record>();
    if (!all.empty() && !from.rarely(8))
      return all[from.below(all.size())].handle;
    if (!seen_.empty() && !from.rarely(3))
      return static_cast<Record*>(seen_[from.below(seen_.size())]);
    return from.rarely(2) ? reinterpret_cast<Record*>(&no_handle_) : nullptr;
  }
  template <class Record>
  Record* any_live() {
    return live<Record>().empty() ? nullptr : live<Record>().back().handle;
  }

private:
  template <class Record>
  struct entry {
    Record* handle;
    std::uint64_t references;
  };
  template <class... Records>
  using lists_of = std::tuple<std::vector<entry<Records>>...>;

  template <class Record>
  std::vector<entry<Record>>& live() {
    return std::get<std::vector<entry<Record>>>(live_);
  }
  template <class Record>
  auto find(const Record* handle) {
    return std::find_if(live<Record>().begin(), live<Record>().end(),
                        [=](const entry<Record>& one) { return one.handle == handle; });
  }

  lists_of<tarva_abi_device_s, tarva_abi_program_s, tarva_abi_kernel_s, tarva_abi_memory_s,
           tarva_abi_future_s, tarva_abi_error_s, tarva_abi_property_s>
      live_;
  std::vector<void*> seen_;
  std::uint64_t no_handle_ = 0;
};

} // namespace fuzz

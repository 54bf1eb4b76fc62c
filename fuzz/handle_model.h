// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The handles that a caller holds, as far as a caller can know.
#pragma once

#include "fuzz/input.h"

#include <algorithm>
#include <map>
#include <tarva_abi.h>
#include <typeindex>
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
    ++references_;
  }

  template <class Record>
  bool is_live(const Record* handle) {
    return find(handle) != live<Record>().end();
  }
  // One reference more or, by -1, less. Does nothing if there is no such handle, so that the library has to refuse as well.
  template <class Record>
  void count(const Record* handle, int change) {
    const auto found = find(handle);
    if (found == live<Record>().end())
      return;
    references_ += change;
    found->references += change;
    if (found->references == 0)
      live<Record>().erase(found);
  }
  // Of all handles.
  int references() const { return references_; }

  // A live handle of the kind if there is one; now and then one of another kind, one that has ended, or an
  // address that never was one.
  template <class Record>
  Record* pick(input& from) {
    auto& all = live<Record>();
    if (!all.empty() && !from.rarely(8))
      return static_cast<Record*>(all[from.below(all.size())].handle);
    if (!seen_.empty() && !from.rarely(3))
      return static_cast<Record*>(seen_[from.below(seen_.size())]);
    return from.rarely(2) ? reinterpret_cast<Record*>(&references_) : nullptr;
  }

private:
  struct entry {
    void* handle;
    int references;
  };
  template <class Record>
  std::vector<entry>& live() {
    return live_[typeid(Record*)];
  }
  template <class Record>
  auto find(const Record* handle) {
    return std::find_if(live<Record>().begin(), live<Record>().end(),
                        [=](const entry& one) { return one.handle == handle; });
  }

  std::map<std::type_index, std::vector<entry>> live_;
  std::vector<void*> seen_;
  alignas(8) int references_ = 0;
};

} // namespace fuzz

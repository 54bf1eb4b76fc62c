// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A hash map with addresses as keys, for tables that grow very large: those of the handles.
#pragma once

#include "base/large_block.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// Null is never a key. The entries stand in one array (open addressing, linear probing), so that a look-up among very many
// costs one miss of the processor's caches and not three. Pointers to values are valid until the next insertion or removal.
//
// It has no lock: its owner guards it. Look-ups may go on side by side. An insertion that throws std::bad_alloc has changed
// nothing, and a removal needs no memory.
template <class Value>
class address_map {
public:
  std::size_t size() const { return size_; }

  // Null if there is none.
  const Value* find(const void* key) const {
    const std::size_t index = place_of(key);
    return index == absent ? nullptr : &slots_[index].value;
  }
  Value* find(const void* key) { return const_cast<Value*>(std::as_const(*this).find(key)); }

  // The value at the key, and whether it is new. If the key is there already, neither its value nor `value` changes.
  std::pair<Value*, bool> try_emplace(const void* key, Value&& value) {
    if (Value* found = find(key))
      return {found, false};
    // At most three quarters are in use: a search ends at a free slot, and there must be one nearby.
    if ((size_ + 1) * 4 > slots_.size() * 3)
      rebuild(slots_.empty() ? least_slots : slots_.size() * 2);
    slot& free = slots_[free_place_for(key)];
    free.key = key;
    free.value = std::move(value);
    ++size_;
    return {&free.value, true};
  }

  // Removes the value at the key and returns it; nothing if there is none.
  std::optional<Value> extract(const void* key) {
    const std::size_t index = place_of(key);
    if (index == absent)
      return std::nullopt;
    std::optional<Value> removed(std::move(slots_[index].value));
    close_gap(index);
    --size_;
    give_back_room();
    return removed;
  }

  // Calls visit(key, value) for each entry, in no particular order.
  template <class Visitor>
  void for_each(Visitor&& visit) const {
    for (const slot& each : slots_)
      if (each.key != nullptr)
        visit(each.key, each.value);
  }

private:
  // Free if the key is null.
  struct slot {
    const void* key = nullptr;
    Value value{};
  };

  using slot_array = std::vector<slot, table_allocator<slot>>;

  static constexpr std::size_t absent = ~std::size_t{0};
  static constexpr std::size_t least_slots = 16; // a power of two, as every number of slots is

  // The slot where the search for a key begins. Addresses are multiples of 16; multiplied by 2^64 divided by the golden
  // ratio, their uppermost bits are spread as evenly as possible.
  std::size_t home_of(const void* key) const {
    const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
    return address * 0x9E3779B97F4A7C15U >> (std::countl_zero(slots_.size()) + 1);
  }
  std::size_t after(std::size_t index) const { return (index + 1) & (slots_.size() - 1); }

  std::size_t place_of(const void* key) const {
    if (size_ == 0 || key == nullptr)
      return absent;
    std::size_t index = home_of(key);
    while (slots_[index].key != key) {
      if (slots_[index].key == nullptr)
        return absent;
      index = after(index);
    }
    return index;
  }

  std::size_t free_place_for(const void* key) const {
    std::size_t index = home_of(key);
    while (slots_[index].key != nullptr)
      index = after(index);
    return index;
  }

  // Entries behind the gap whose search would now end at it move forward.
  void close_gap(std::size_t gap) {
    for (std::size_t index = after(gap); slots_[index].key != nullptr; index = after(index)) {
      const std::size_t home = home_of(slots_[index].key);
      const bool is_reached_past_gap =
          ((index - home) & (slots_.size() - 1)) >= ((index - gap) & (slots_.size() - 1));
      if (is_reached_past_gap) {
        slots_[gap] = std::move(slots_[index]);
        gap = index;
      }
    }
    slots_[gap] = slot();
  }

  void rebuild(std::size_t count) {
    slot_array old(count);
    old.swap(slots_);
    for (slot& each : old)
      if (each.key != nullptr)
        slots_[free_place_for(each.key)] = std::move(each);
  }

  // Shrinks the array when few entries are left. Without memory for a smaller one, the large one stays.
  void give_back_room() noexcept {
    constexpr std::size_t page = 4096;
    if (slots_.size() * sizeof(slot) <= page || size_ * 8 > slots_.size())
      return;
    try {
      rebuild(slots_.size() / 2);
    } catch (const std::bad_alloc&) {
      return;
    }
  }

  slot_array slots_;
  std::size_t size_ = 0;
};

} // namespace oryn::tarva::library

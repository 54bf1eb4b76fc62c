// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// The ranges of launches.
#ifndef TARVA_RANGE_HPP
#define TARVA_RANGE_HPP

#include <tarva/view.hpp>

#include <tarva_abi.h>

#include <cstddef>
#include <cstdint>

namespace tarva {

template <std::size_t Dimensions>
class global_range;

/// How many work-items a launch has, in which groups. Made by the functions below; sizes are given for one, two
/// or three dimensions.
class range {
public:
  explicit constexpr range(const tarva_abi_launch_range_s& record) noexcept : record_(record) {}

  /// So many work-items in each dimension, in groups of the device's choice unless `in_groups_of` is added.
  template <class... Sizes>
  static constexpr global_range<sizeof...(Sizes)> items(Sizes... sizes);

  /// At least so many work-items in each dimension, in groups of the size that the kernel prefers: a kernel gets
  /// no fewer than such a group has. Where groups must divide the range, mostly below OpenCL 2.0, another size is refused.
  template <class... Sizes>
  static constexpr range at_least(Sizes... sizes) {
    return range({TARVA_ABI_LAUNCH_GLOBAL_SIZE, {dimensions<Sizes...>(), word(sizes)...}});
  }

  /// So many groups, in one dimension, of the size that the kernel prefers.
  static constexpr range groups(count number) { return range({TARVA_ABI_LAUNCH_GROUPS, {number}}); }

  /// In each dimension so many groups, of this size.
  template <class... Sizes>
  static constexpr range groups_of(count number, Sizes... sizes) {
    return range({TARVA_ABI_LAUNCH_GROUPS_SIZED, {dimensions<Sizes...>(), number, word(sizes)...}});
  }

  /// For each compute unit so many groups, in one dimension, of the size that the kernel prefers.
  static constexpr range groups_per_unit(count number) {
    return range({TARVA_ABI_LAUNCH_GROUPS_PER_UNIT, {number}});
  }

  /// In each dimension one group of this size for each compute unit.
  template <class... Sizes>
  static constexpr range group_per_unit_of(Sizes... sizes) {
    return range({TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED, {dimensions<Sizes...>(), 0, word(sizes)...}});
  }

  constexpr const tarva_abi_launch_range_s& record() const noexcept { return record_; }

private:
  template <class... Sizes>
  static constexpr std::uint64_t dimensions() noexcept {
    static_assert(sizeof...(Sizes) >= 1 && sizeof...(Sizes) <= 3, "a launch has one to three dimensions");
    return sizeof...(Sizes);
  }
  template <class Size>
  static constexpr std::uint64_t word(Size size) {
    static_assert(std::is_convertible_v<Size, count>, "sizes are whole numbers");
    return count(size);
  }
  template <std::size_t>
  friend class global_range;

  tarva_abi_launch_range_s record_;
};

/// A range of given sizes, to which groups and an offset can be added.
template <std::size_t Dimensions>
class global_range : public range {
public:
  /// In groups of this size.
  template <class... Sizes>
  constexpr global_range in_groups_of(Sizes... sizes) const {
    return with(7, sizes...);
  }
  /// With global ids that begin there. Not on a device of OpenCL 1.0.
  template <class... Ids>
  constexpr global_range from(Ids... ids) const {
    return with(1, ids...);
  }

private:
  friend class range;
  explicit constexpr global_range(const tarva_abi_launch_range_s& record) noexcept : range(record) {}

  template <class... Words>
  constexpr global_range with(std::size_t place, Words... words) const {
    static_assert(sizeof...(Words) == Dimensions, "the range has another number of dimensions");
    global_range result = *this;
    ((result.record_.words[place++] = word(words)), ...);
    return result;
  }
};

template <class... Sizes>
constexpr global_range<sizeof...(Sizes)> range::items(Sizes... sizes) {
  return global_range<sizeof...(Sizes)>(
      {TARVA_ABI_LAUNCH_EXPLICIT, {dimensions<Sizes...>(), 0, 0, 0, word(sizes)...}});
}

} // namespace tarva

#endif

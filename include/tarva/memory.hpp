// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Typed memory objects.
#ifndef TARVA_MEMORY_HPP
#define TARVA_MEMORY_HPP

#include <tarva/error.hpp>
#include <tarva/future.hpp>
#include <tarva/handle.hpp>
#include <tarva/property.hpp>
#include <tarva/types.hpp>
#include <tarva/view.hpp>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tarva {

template <class T>
class memory;

/// A range of a memory object. Like an iterator it owns nothing, so the object has to live longer.
template <class T>
class slice {
public:
  slice(tarva_abi_memory_s* of, count start, count size) noexcept
      : record_(of), start_(start), count_(size) {}

  std::uint64_t start() const noexcept { return start_; }
  std::uint64_t size() const noexcept { return count_; }

  /// A range of this range. Throws std::out_of_range if it does not lie within.
  slice part(count start, count size) const {
    if (start > count_ || size > count_ - start)
      detail::fail<std::out_of_range>("A part of " + std::to_string(size) + " elements from element " +
                                      std::to_string(start) + " on reaches beyond the whole of " +
                                      std::to_string(count_) + " elements.");
    return {record_, start_ + start, size};
  }

  /// Fills the range with one value.
  void fill(const T& value) const { call<tarva_abi_fill_memory>(record_, &value, start_, count_); }

  /// Copies the range to one of the same size.
  void copy_to(const slice& to) const {
    check(to.count_);
    call<tarva_abi_copy_memory>(record_, start_, to.record_, to.start_, count_);
  }

  /// Write as many elements as the range has, and wait.
  TARVA_THIN void write(view<const T> from) const { detail::finish(start_write(from)); }
  /// Read as many elements as the range has, and wait.
  TARVA_THIN void read(view<T> to) const { detail::finish(start_read(to)); }
  std::vector<T> read() const {
    std::vector<T> result(count_);
    read(result);
    return result;
  }

  /// Start a write or read on the caller's storage, which the future needs until its end.
  [[nodiscard]] future<> async_write(view<const T> from) const { return future<>(start_write(from)); }
  [[nodiscard]] future<> async_read(view<T> to) const { return future<>(start_read(to)); }
  /// The same with storage that the future holds, and returns at its end.
  [[nodiscard]] future<std::vector<T>> async_write(std::vector<T>&& from) const {
    future<> started(start_write(from));
    return {std::move(started), std::move(from)};
  }
  /// Other storage that is about to vanish is not written from.
  template <class Temporary>
  future<> async_write(const Temporary&&) const = delete;
  [[nodiscard]] future<std::vector<T>> async_read() const {
    std::vector<T> to(count_);
    future<> started(start_read(to));
    return {std::move(started), std::move(to)};
  }

private:
  TARVA_THIN void check(std::uint64_t size) const {
    if (size != count_)
      differ(size, count_);
  }
  TARVA_FAILS static void differ(std::uint64_t size, std::uint64_t own_size) {
    detail::fail<std::length_error>("The two sides of a transfer have different numbers of elements: " +
                                    std::to_string(own_size) + " and " + std::to_string(size) + '.');
  }
  /// Containers without elements may have no storage, but the library wants to be given some.
  template <class Storage>
  TARVA_THIN Storage* some(Storage* storage) const noexcept {
    return storage != nullptr || count_ != 0 ? storage : reinterpret_cast<Storage*>(const_cast<slice*>(this));
  }
  TARVA_THIN tarva_abi_future_s* start_write(view<const T> from) const {
    check(from.size());
    tarva_abi_future_s* started = nullptr;
    call<tarva_abi_async_write_memory>(record_, start_, count_, static_cast<const void*>(some(from.data())),
                                       &started);
    return started;
  }
  TARVA_THIN tarva_abi_future_s* start_read(view<T> to) const {
    check(to.size());
    tarva_abi_future_s* started = nullptr;
    call<tarva_abi_async_read_memory>(record_, start_, count_, static_cast<void*>(some(to.data())), &started);
    return started;
  }

  tarva_abi_memory_s* record_;
  std::uint64_t start_;
  std::uint64_t count_;
};

/// The owner of a memory object whose type is known at run time only.
using memory_handle = handle<tarva_abi_memory_s, tarva_abi_retain_memory, tarva_abi_release_memory>;

/// A memory object: elements of one type, which belong to no device and are moved to where they are used. A copy
/// of the object of this class is the same memory object; copy_to() copies content.
template <class T>
class memory : public memory_handle {
  static_assert(is_element<T>, TARVA_NO_VALUE);

public:
  using value_type = T;

  /// Empty: no memory object.
  memory() noexcept = default;
  /// So many elements without content. The label is for the object's properties.
  explicit memory(count size, text label = "") : memory_handle(allocate(label, size)), count_(size) {}
  /// As many elements as there are in `content`, with this content.
  explicit memory(view<const T> content, text label = "") : memory(content.size(), label) { write(content); }
  /// Takes over a reference that the caller has. Throws std::invalid_argument, with the reference given up, if the
  /// elements of the object are of another type.
  static memory adopt(tarva_abi_memory_s* owned) {
    memory result{memory_handle(owned)};
    const property tree = result.properties();
    if (tree["TYPE"].get<std::uint64_t>() != element<T>::type)
      detail::fail<std::invalid_argument>("The memory object has elements of another type.");
    result.count_ = tree["NUM_ELEMENTS"].get<std::uint64_t>();
    return result;
  }

  std::uint64_t size() const noexcept { return count_; }
  property properties() const { return detail::root<tarva_abi_get_memory_root_property>(get()); }

  /// All of it, or a range of it, for the functions of tarva::slice.
  TARVA_THIN slice<T> all() const noexcept { return {get(), 0, count_}; }
  slice<T> part(count start, count size) const { return all().part(start, size); }

  /// What follows is for all of it; see tarva::slice.
  TARVA_THIN void fill(const T& value) const { all().fill(value); }
  void copy_to(const memory& to) const { all().copy_to(to.all()); }
  void copy_to(const slice<T>& to) const { all().copy_to(to); }
  TARVA_THIN void write(view<const T> from) const { all().write(from); }
  TARVA_THIN void read(view<T> to) const { all().read(to); }
  std::vector<T> read() const { return all().read(); }
  [[nodiscard]] future<> async_write(view<const T> from) const { return all().async_write(from); }
  [[nodiscard]] future<> async_read(view<T> to) const { return all().async_read(to); }
  [[nodiscard]] future<std::vector<T>> async_write(std::vector<T>&& from) const {
    return all().async_write(std::move(from));
  }
  template <class Temporary>
  future<> async_write(const Temporary&&) const = delete;
  [[nodiscard]] future<std::vector<T>> async_read() const { return all().async_read(); }

private:
  explicit memory(memory_handle&& owned) noexcept : memory_handle(std::move(owned)) {}

  static tarva_abi_memory_s* allocate(text label, std::uint64_t size) {
    tarva_abi_memory_s* record = nullptr;
    call<tarva_abi_memory_allocate_typed>(label.c_str(), element<T>::type, size, &record);
    return record;
  }

  std::uint64_t count_ = 0;
};

template <class Container>
explicit memory(const Container&, text = "")
    -> memory<std::remove_cv_t<std::remove_pointer_t<decltype(std::data(std::declval<const Container&>()))>>>;

} // namespace tarva

#endif

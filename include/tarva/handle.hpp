// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// Ownership of the counted handles: devices, programs, kernels and memory objects.
#ifndef TARVA_HANDLE_HPP
#define TARVA_HANDLE_HPP

#include <utility>

namespace tarva {

/// Owns one reference of a counted handle, or nothing. A copy owns one more reference of the same object. What has
/// been moved from is empty, and using it is refused by the library.
template <class Record, void (*Retain)(void*, Record*), void (*Release)(void*, Record*)>
class handle {
public:
  /// Empty.
  handle() noexcept = default;
  /// Takes over a reference that the caller has.
  explicit handle(Record* owned) noexcept : record_(owned) {}
  handle(const handle& other) noexcept : record_(other.record_) {
    if (record_ != nullptr)
      Retain(nullptr, record_);
  }
  handle(handle&& other) noexcept : record_(std::exchange(other.record_, nullptr)) {}
  handle& operator=(const handle& other) noexcept {
    if (this != &other)
      *this = handle(other);
    return *this;
  }
  handle& operator=(handle&& other) noexcept {
    handle taken(std::move(other));
    std::swap(record_, taken.record_);
    return *this;
  }
  ~handle() {
    if (record_ != nullptr)
      Release(nullptr, record_);
  }

  /// Whether there is an object.
  explicit operator bool() const noexcept { return record_ != nullptr; }

  /// The handle for the functions of tarva_abi.h. It stays owned.
  Record* get() const noexcept { return record_; }

  /// Gives the reference to the caller.
  [[nodiscard]] Record* release() noexcept { return std::exchange(record_, nullptr); }

  /// Gives the reference up.
  void reset() noexcept { *this = handle(); }

private:
  Record* record_ = nullptr;
};

} // namespace tarva

#endif

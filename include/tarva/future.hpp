// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// The caller's hold on a read or a write.
#ifndef TARVA_FUTURE_HPP
#define TARVA_FUTURE_HPP

#include <tarva/error.hpp>

#include <utility>
#include <vector>

namespace tarva {
namespace detail {

TARVA_FAILS inline void fail_wait(tarva_abi_result code, tarva_abi_error_s* object) {
  std::vector<failure> chain = read_error(code, object);
  const char* const text =
      knows_no_handle(chain) ? "The future is empty: it was moved from, or it has been waited for." : "";
  fail_with(code, std::move(chain), text);
}

/// Waits for an operation and throws what it failed with.
TARVA_THIN void finish(tarva_abi_future_s* future) {
  if (has_failed())
    return;
  struct { // all of it is written by the call, if it is looked at
    long code;
    tarva_abi_error_s *operation, *object;
  } told;
  const tarva_abi_result code =
      tarva_abi_wait_future(nullptr, future, &told.code, &told.operation, &told.object);
  if (code != TARVA_ABI_OK)
    fail_wait(code, told.object);
  else if (told.code != TARVA_ABI_OK)
    fail_wait(told.code, told.operation);
}

} // namespace detail

/// A read or a write that has been started. Storage that it works on belongs to it until get() has returned or
/// the future is gone: the destructor waits, and drops what the operation failed with.
template <class Value = void>
class future;

template <>
class future<void> {
public:
  /// Takes over a future that the caller has.
  explicit future(tarva_abi_future_s* owned) noexcept : record_(owned) {}
  future(future&& other) noexcept : record_(std::exchange(other.record_, nullptr)) {}
  future& operator=(future&& other) noexcept {
    future previous(std::move(*this));
    record_ = std::exchange(other.record_, nullptr);
    return *this;
  }
  ~future() {
    long code = TARVA_ABI_OK;
    tarva_abi_error_s* object = nullptr;
    if (record_ != nullptr &&
        tarva_abi_wait_future(nullptr, record_, &code, nullptr, &object) != TARVA_ABI_OK)
      tarva_abi_free_error(nullptr, object);
  }

  /// Waits for the end, and throws if the operation failed. To be called once.
  void get() {
    if (!detail::has_failed())
      detail::finish(release());
  }

  /// Ends the future without waiting. The storage has to outlive the operation all the same.
  void abandon() noexcept {
    if (tarva_abi_future_s* record = release())
      tarva_abi_abandon_future(nullptr, record);
  }

  /// Gives the future to the caller.
  [[nodiscard]] tarva_abi_future_s* release() noexcept { return std::exchange(record_, nullptr); }

  /// Whether get() is still to be called.
  bool valid() const noexcept { return record_ != nullptr; }

private:
  tarva_abi_future_s* record_;
};

/// A future that holds the storage of its operation, and hands it out at the end.
template <class Value>
class future {
public:
  future(future<void> operation, Value storage) noexcept
      : storage_(std::move(storage)), operation_(std::move(operation)) {}
  future(future&&) noexcept = default;
  future& operator=(future&& other) noexcept {
    operation_ = std::move(other.operation_); // waits for the one before, which works on the storage before
    storage_ = std::move(other.storage_);
    return *this;
  }

  /// Waits for the end. Returns the storage, or throws if the operation failed.
  Value get() {
    operation_.get();
    return std::move(storage_);
  }
  bool valid() const noexcept { return operation_.valid(); }

private:
  Value storage_; // outlives the operation, which stands behind it
  future<void> operation_;
};

} // namespace tarva

#endif

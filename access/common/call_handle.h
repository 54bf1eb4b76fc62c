#pragma once

#include "access/common/transport.h"
#include "capability/qv.h"

#include <cstdint>
#include <memory>

namespace oryn::skerv::common {

// A share in the call handle of one device. All wrappers made from the device hold one; the last closes it.
class call_handle {
public:
  call_handle() noexcept = default;

  // Takes over `handle`; it is closed even if this constructor throws.
  explicit call_handle(qv_call_handle* handle) : share_(handle, &qv_close_call_handle) {}

  qv_call_handle* get() const noexcept { return share_.get(); }
  explicit operator bool() const noexcept { return share_ != nullptr; }

  // Performs the capability's command `command`; the record's status is the caller's to test.
  void send(std::uint64_t command, void* record) const {
    check_transport(qv_call_capability(share_.get(), command, record, 0));
  }

private:
  std::shared_ptr<qv_call_handle> share_;
};

} // namespace oryn::skerv::common

#include "access/common/transport.h"

#include <stdexcept>

namespace oryn::skerv::common {

void throw_transport(std::int32_t code) {
  switch (code) {
  case QV_INVALID_COMMAND_ID:
    throw qv::invalid_command_id("Invalid command ID provided to capability call.", code);
  case QV_UNRECOVERABLE_ERROR:
    throw qv::unrecoverable_error("", code);
  default:
    throw qv::unknown_error("Unknown error code returned by libqv.", code);
  }
}

void check_capability_library_version() {
  if (qv_version() != QV_VERSION)
    throw std::runtime_error("The libqv version detected is incompatible with this version of SKERV.");
}

} // namespace oryn::skerv::common

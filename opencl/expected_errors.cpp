#include "opencl/expected_errors.h"

namespace oryn::tarva::library {

namespace {

constinit thread_local unsigned depth = 0;

} // namespace

expected_errors::expected_errors() noexcept {
  ++depth;
}

expected_errors::~expected_errors() {
  --depth;
}

bool expected_errors::on_this_thread() noexcept {
  return depth != 0;
}

} // namespace oryn::tarva::library

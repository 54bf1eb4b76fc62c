#pragma once

#include <memory>
#include <vector>

namespace oryn::tarva::library {

class library_device;

// The devices of all OpenCL versions, by version from 1.0 on, not yet initialized.
std::vector<std::shared_ptr<library_device>> detect_devices();

} // namespace oryn::tarva::library

#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace oryn::tarva::library {

class library_device;

// Storage on one device, opaque to all but that device. Keeps the device alive.
class device_memory_allocation {
public:
  device_memory_allocation(std::shared_ptr<library_device> device, data_type type, std::uint64_t size)
      : device_(std::move(device)), type_(type), size_(size) {}
  virtual ~device_memory_allocation() = default;
  device_memory_allocation(const device_memory_allocation&) = delete;
  device_memory_allocation& operator=(const device_memory_allocation&) = delete;

  const std::shared_ptr<library_device>& get_device() const { return device_; }
  data_type get_type() const { return type_; }
  std::uint64_t get_size() const { return size_; }

private:
  std::shared_ptr<library_device> device_;
  data_type type_;
  std::uint64_t size_;
};

} // namespace oryn::tarva::library

#pragma once

#include "access/opencl/context.h"
#include "access/opencl/device.h"
#include "access/opencl/device_command_queue.h"
#include "objects/device_work_dispatcher.h"
#include "objects/library_device.h"
#include "opencl/opencl_version.h"
#include "properties/catalogue_owner.h"
#include "properties/device_catalogue.h"

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace oryn::tarva::library {

class opencl_device : public catalogue_owner<library_device, get_device_catalogue> {};

// A device of one OpenCL version.
template <version V>
class opencl_version_device final : public opencl_device {
public:
  using access_device = skerv::opencl::device<V>;

  // Makes no OpenCL object; see initialize().
  explicit opencl_version_device(const access_device& device);
  ~opencl_version_device() override;

  void initialize() override;
  void release() override;

  bool is_ir_supported(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                       const std::vector<std::uint8_t>& data, const std::string& options) override;
  build_result load_ir(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                       const std::vector<std::uint8_t>& data, const std::string& options,
                       const std::string& user_label) override;
  std::shared_ptr<library_program> get_builtin_program() override { return builtin_program_; }

  bool is_little_endian() override { return little_endian_; }
  std::string get_friendly_short_description() override;
  std::string get_friendly_summary() override;

  std::unique_ptr<device_memory_allocation> allocate_memory(data_type type, std::uint64_t size) override;
  void free_memory(std::unique_ptr<device_memory_allocation>& allocation) override;

  const access_device& get_access_device() const { return *device_; }

private:
  version_number get_catalogue_version() const override { return static_cast<version_number>(V); }
  bool read_value(const device_catalogue::row& wanted, property_value& value) override;

  struct no_queue {};
  template <version W, bool HasQueue = version_traits<W>::has_device_queue>
  struct default_queue {
    using type = no_queue;
  };
  template <version W>
  struct default_queue<W, true> {
    using type = std::unique_ptr<skerv::opencl::device_command_queue<W>>;
  };

  std::string get_name() const;
  // What the commands that take several devices are given. A list in braces would copy the device twice.
  std::vector<access_device> list_of_this() const { return std::vector<access_device>(1, *device_); }
  std::shared_ptr<library_program> make_builtin_program();
  void make_default_device_queue();
  bool has_spir_version(const char* wanted) const;
  skerv::opencl::program<V> make_program(std::uint64_t ir_type, const std::vector<std::uint8_t>& data) const;
  static void set_specialization_constants(skerv::opencl::program<V>& program, const ir_header& header);

  std::unique_ptr<access_device> device_;
  std::unique_ptr<skerv::opencl::context<V>> context_;
  [[no_unique_address]] typename default_queue<V>::type default_device_queue_;
  std::shared_ptr<library_program> builtin_program_;
  bool little_endian_ = false;
};

using opencl_1_0_device = opencl_version_device<version::v1_0>;
using opencl_1_1_device = opencl_version_device<version::v1_1>;
using opencl_1_2_device = opencl_version_device<version::v1_2>;
using opencl_2_0_device = opencl_version_device<version::v2_0>;
using opencl_2_1_device = opencl_version_device<version::v2_1>;
using opencl_2_2_device = opencl_version_device<version::v2_2>;

// The dispatcher of a device of version V. Declared here, where a device asks for it; the level above defines
// it.
template <version V>
std::unique_ptr<device_work_dispatcher> make_work_dispatcher(const skerv::opencl::context<V>& context,
                                                             const skerv::opencl::device<V>& device);

} // namespace oryn::tarva::library

#pragma once

#include "objects/build_result.h"
#include "objects/ir_header.h"
#include "properties/data_type.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

class device_memory_allocation;
class device_work_dispatcher;
class library_program;
template <class T>
class dag;
namespace device_ir {
class device_command;
}

// A compute device as the library's own logic sees it: something with properties that makes programs of
// intermediate representations, holds memory, and runs work through a dispatcher of its own.
class library_device : public property_interface, public std::enable_shared_from_this<library_device> {
public:
  library_device();
  ~library_device() override;
  library_device(const library_device&) = delete;
  library_device& operator=(const library_device&) = delete;

  // Everything that needs a shared pointer to the device; called once, after construction.
  virtual void initialize() = 0;
  // Ends the device's work: stops the dispatcher and joins its thread.
  virtual void release() = 0;

  // True if the device can take this IR; does not build. `data` and `options` are not looked at.
  virtual bool is_ir_supported(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                               const std::vector<std::uint8_t>& data, const std::string& options) = 0;
  // Makes and builds a program. A failed build is no exception: see build_result.
  virtual build_result load_ir(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                               const std::vector<std::uint8_t>& data, const std::string& options,
                               const std::string& user_label) = 0;
  virtual std::shared_ptr<library_program> get_builtin_program() = 0;

  // The byte order of the device.
  virtual bool is_little_endian() = 0;
  virtual std::string get_friendly_short_description() = 0;
  virtual std::string get_friendly_summary() = 0;

  // `size` counts elements of `type`.
  virtual std::unique_ptr<device_memory_allocation> allocate_memory(data_type type, std::uint64_t size) = 0;
  virtual void free_memory(std::unique_ptr<device_memory_allocation>& allocation) = 0;

  device_work_dispatcher& get_dispatcher();
  void set_dispatcher(std::unique_ptr<device_work_dispatcher> dispatcher);
  void submit_work(dag<std::shared_ptr<device_ir::device_command>>&& graph);
  void signal_acquire(const std::shared_ptr<library_device>& release_device,
                      const std::shared_ptr<library_device>& acquire_device, std::uint64_t sync_id);

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }

private:
  const std::uint64_t unique_identifier_;
  std::unique_ptr<device_work_dispatcher> dispatcher_;
};

} // namespace oryn::tarva::library

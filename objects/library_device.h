// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Devices as the library's own logic sees them, and the dispatchers that they have.
#pragma once

#include "objects/intermediate_representation.h"
#include "properties/data_type.h"
#include "properties/property_interface.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

struct device_memory_allocation;
class library_device;
class library_program;
template <class T>
class dag;
namespace physical_ir {
class physical_operation;
}
namespace device_ir {
class device_command;
}

// A graph of device commands, put in the order of execution by the dispatcher that is to run it, with all the storage that the
// hand-over and the work take; what it is, only the dispatcher knows. Belongs to the thread that starts the operation until it is
// handed over, then to the worker.
struct prepared_work;

// Takes graphs of device commands for one device, and runs them on a thread of its own: the worker.
class device_work_dispatcher {
public:
  device_work_dispatcher() = default;
  virtual ~device_work_dispatcher() = default;
  device_work_dispatcher(const device_work_dispatcher&) = delete;
  device_work_dispatcher& operator=(const device_work_dispatcher&) = delete;

  // Makes a graph ready for this dispatcher. If memory runs out it does so here, where the operation can still be refused, and
  // not when half of its subgraphs are running. Any thread.
  virtual std::shared_ptr<prepared_work>
  prepare_work(const dag<std::shared_ptr<device_ir::device_command>>& graph) = 0;
  // Hands work to the worker that this dispatcher has prepared. Refused after shutdown. Any thread.
  virtual void submit_work(const std::shared_ptr<prepared_work>& work) = 0;
  // Tells the worker that the releasing side of a hand-over between two devices has come. Any thread.
  virtual void signal_acquire(const std::shared_ptr<library_device>& release_device,
                              const std::shared_ptr<library_device>& acquire_device,
                              std::uint64_t sync_id) = 0;
  // Starts the worker under that name; once. Throws std::system_error if there is no thread to be had.
  virtual void start(const std::string& thread_name) = 0;
  // Returns when the worker has nothing to do and holds nothing of what it has done.
  virtual void wait_until_idle() = 0;
  // Ends the worker and joins it. Work that is left ends with an error. Refused the second time.
  virtual void shutdown() = 0;
};

// A compute device: something with properties that makes programs of intermediate representations, holds memory, and runs
// work through a dispatcher of its own. Between initialize() and release() any thread may use it.
class library_device : public property_interface, public std::enable_shared_from_this<library_device> {
public:
  library_device();
  ~library_device() override;
  library_device(const library_device&) = delete;
  library_device& operator=(const library_device&) = delete;

  // Everything that needs a shared pointer to the device; called once, after construction.
  virtual void initialize() = 0;
  // Ends the device's work: stops the dispatcher and joins its thread. Called once, by the stop.
  virtual void release() = 0;

  // True if the device can take this IR; does not build. `data` and `options` are not looked at.
  virtual bool is_ir_supported(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                               const std::vector<std::uint8_t>& data, const std::string& options) = 0;
  // Makes and builds a program. A failed build is no exception: see build_result.
  virtual build_result load_ir(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                               const std::vector<std::uint8_t>& data, const std::string& options,
                               const std::string& user_label) = 0;
  virtual std::shared_ptr<library_program> get_builtin_program() = 0;

  // The byte order of the device. Asked in each launch, so devices keep it.
  virtual bool is_little_endian() = 0;
  virtual std::string get_friendly_short_description() = 0;
  virtual std::string get_friendly_summary() = 0;

  // `size` counts elements of `type`.
  virtual std::unique_ptr<device_memory_allocation> allocate_memory(data_type type, std::uint64_t size) = 0;
  virtual void free_memory(std::unique_ptr<device_memory_allocation>& allocation) = 0;

  // The device commands, in order, that a physical operation becomes on this device.
  virtual std::vector<std::shared_ptr<device_ir::device_command>>
  generate_commands(const std::shared_ptr<physical_ir::physical_operation>& operation);

  // Set by initialize(), once. To ask for it earlier is an error.
  device_work_dispatcher& get_dispatcher();
  void set_dispatcher(std::unique_ptr<device_work_dispatcher> dispatcher);
  void signal_acquire(const std::shared_ptr<library_device>& release_device,
                      const std::shared_ptr<library_device>& acquire_device, std::uint64_t sync_id);

  std::uint64_t get_unique_identifier() const { return unique_identifier_; }

private:
  const std::uint64_t unique_identifier_;
  std::unique_ptr<device_work_dispatcher> dispatcher_;
};

} // namespace oryn::tarva::library

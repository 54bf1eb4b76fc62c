#pragma once

#include <cstdint>
#include <memory>

namespace oryn::tarva::library {

class library_device;
template <class T>
class dag;
namespace device_ir {
class device_command;
}

// A graph of device commands in the order of execution, with all room that it takes to hand it over and to work
// through it.
class prepared_work {
public:
  prepared_work() = default;
  virtual ~prepared_work() = default;
  prepared_work(const prepared_work&) = delete;
  prepared_work& operator=(const prepared_work&) = delete;
};

// The worker of one device: takes graphs of device commands and runs them on a thread of its own.
class device_work_dispatcher {
public:
  device_work_dispatcher() = default;
  virtual ~device_work_dispatcher() = default;
  device_work_dispatcher(const device_work_dispatcher&) = delete;
  device_work_dispatcher& operator=(const device_work_dispatcher&) = delete;

  // Makes a graph ready for this dispatcher, so that memory runs out here, on the caller's thread, and not half-way
  // through a request. Any thread.
  virtual std::unique_ptr<prepared_work>
  prepare_work(const dag<std::shared_ptr<device_ir::device_command>>& graph) = 0;
  // Hands work to the worker that this dispatcher has prepared. Refused after shutdown. Any thread.
  virtual void submit_work(std::unique_ptr<prepared_work> work) = 0;
  // Tells the worker that the releasing side of a hand-over between two devices has come. Any thread.
  virtual void signal_acquire(const std::shared_ptr<library_device>& release_device,
                              const std::shared_ptr<library_device>& acquire_device,
                              std::uint64_t sync_id) = 0;
  // Starts the worker; once.
  virtual void start() = 0;
  // Returns when the worker has nothing to do and holds nothing of what it has done.
  virtual void wait_until_idle() = 0;
  // Ends the worker and joins it. Work that is left ends with an error. Refused the second time.
  virtual void shutdown() = 0;
};

} // namespace oryn::tarva::library

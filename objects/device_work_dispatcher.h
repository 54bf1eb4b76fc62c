#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace oryn::tarva::library {

class library_device;
template <class T>
class dag;
namespace device_ir {
class device_command;
}

// The worker of one device: takes graphs of device commands and runs them on a thread of its own.
class device_work_dispatcher {
public:
  device_work_dispatcher() = default;
  virtual ~device_work_dispatcher() = default;
  device_work_dispatcher(const device_work_dispatcher&) = delete;
  device_work_dispatcher& operator=(const device_work_dispatcher&) = delete;

  // Obtains the room for so many more graphs and for the signals that so many commands wait for, so that handing
  // over and signalling cannot run out of memory half-way through a request.
  virtual void make_room(std::size_t graphs, std::size_t commands) = 0;
  // Hands a graph to the worker. Refused after shutdown. Any thread.
  virtual void submit_work(dag<std::shared_ptr<device_ir::device_command>>&& graph) = 0;
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

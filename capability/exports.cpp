// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exported functions, and the one machine that they are about.
#include "base/thread_annotations.h"
#include "capability/machine.h"

#include <cstdlib>

namespace qv {
namespace {

// The machine is looked at once, by the first call that asks for it and has the memory. It has to outlive every open handle,
// also in a process that ends without closing them, so it is freed only if there is none.
oryn::mutex machine_lock;
const machine* the_machine TARVA_GUARDED_BY(machine_lock) = nullptr;
bool has_ended TARVA_GUARDED_BY(machine_lock) = false;

// Runs when the library is unloaded or the process ends, on whatever thread that happens.
struct machine_end {
  ~machine_end() {
    // Not waited for: in a forked child the thread that held the lock is gone.
    if (!machine_lock.try_lock())
      return;
    const oryn::lock_guard guard(machine_lock, std::adopt_lock);
    if (any_call_handle_open())
      return;
    delete the_machine;
    the_machine = nullptr;
    has_ended = true;
  }
};

// Null if the process is past its end.
const machine* find_machine() TARVA_REQUIRES(machine_lock) {
  if (the_machine != nullptr || has_ended)
    return the_machine;
  the_machine = new machine(look_at_machine(opencl_loader_name, secure_getenv("QV_OPENCL_VERSIONS")));
  // Made when OpenCL has been loaded, so that its own end comes later.
  static const machine_end end;
  return the_machine;
}

// Puts a question to the machine. The lock is held while the machine is looked at, so that a second thread waits for the first
// to have done so; the questions themselves are short. Nothing thrown leaves here.
template <class Question>
std::int32_t ask_machine(Question question) noexcept {
  try {
    const oryn::lock_guard guard(machine_lock);
    const machine* found = find_machine();
    return found == nullptr ? QV_UNRECOVERABLE_ERROR : question(*found);
  } catch (...) {
    return QV_UNRECOVERABLE_ERROR;
  }
}

} // namespace
} // namespace qv

extern "C" {

// What the functions promise is told in qv.h. The two that ask nothing of the machine are in dispatch.cpp.

uint64_t qv_version(void) {
  return QV_VERSION;
}

int32_t qv_get_root_devices(uint64_t count, uint64_t* array, uint64_t* out_count, uint64_t) {
  return qv::ask_machine(
      [=](const qv::machine& machine) { return machine.get_root_devices(count, array, out_count); });
}

int32_t qv_find_capability_nodes(uint64_t root, uint64_t capability_id, uint64_t count, uint64_t* array,
                                 uint64_t* out_count, uint64_t) {
  return qv::ask_machine([=](const qv::machine& machine) {
    return machine.find_capability_nodes(root, capability_id, count, array, out_count);
  });
}

int32_t qv_create_call_handle(uint64_t root, uint64_t node, qv_call_handle** out_handle, uint64_t) {
  return qv::ask_machine(
      [=](const qv::machine& machine) { return machine.create_call_handle(root, node, out_handle); });
}
}

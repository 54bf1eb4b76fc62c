#include "capability/call_handle.h"

#include "capability/thread_end.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace qv {
namespace {

constexpr std::size_t slot_count = 4096;
constexpr unsigned index_bits = 12;
static_assert(slot_count == std::size_t{1} << index_bits);

struct slot {
  // Grows by one at each opening and closing; odd while open.
  std::atomic<std::uint64_t> generation{0};
  binding bound;
};

// Plain static storage: handles can be looked up before the first constructor and after the last destructor.
std::array<slot, slot_count> slots;
std::mutex slots_lock;
std::size_t next_slot = 0;
std::atomic<std::size_t> open_count{0};

qv_call_handle* make_handle(std::size_t index, std::uint64_t generation) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): it is only ever compared
  return reinterpret_cast<qv_call_handle*>(generation << index_bits | index);
}

slot* find_slot(qv_call_handle* handle) noexcept {
  const auto value = reinterpret_cast<std::uintptr_t>(handle);
  const std::uint64_t generation = value >> index_bits;
  slot& candidate = slots[value & (slot_count - 1)];
  const bool open = generation % 2 == 1 && candidate.generation.load(std::memory_order_acquire) == generation;
  return open ? &candidate : nullptr;
}

// Kept out of the way of the commands that need no other thread.
[[gnu::noinline]] void run_on_other_thread(const command& performer, const root_device& device,
                                           void* record) {
  std::thread([&] { performer.run(device, record); }).join();
}

} // namespace

qv_call_handle* open_call_handle(const binding& bound) {
  const std::lock_guard guard(slots_lock);
  for (std::size_t tried = 0; tried < slot_count; ++tried) {
    const std::size_t index = next_slot;
    next_slot = (next_slot + 1) % slot_count;
    slot& candidate = slots[index];
    const std::uint64_t generation = candidate.generation.load(std::memory_order_relaxed) + 1;
    if (generation % 2 == 0)
      continue;
    candidate.bound = bound;
    candidate.generation.store(generation, std::memory_order_release);
    ++open_count;
    return make_handle(index, generation);
  }
  return nullptr;
}

bool close_call_handle(qv_call_handle* handle) {
  const std::lock_guard guard(slots_lock);
  slot* open = find_slot(handle);
  if (open == nullptr)
    return false;
  open->generation.fetch_add(1, std::memory_order_release);
  --open_count;
  return true;
}

bool any_call_handle_open() noexcept {
  return open_count != 0;
}

std::int32_t call_command(const binding& bound, std::uint64_t number, void* record) {
  if (number >= bound.commands->size())
    return QV_INVALID_COMMAND_ID;
  const command& performer = (*bound.commands)[number];
  if (performer.run == nullptr)
    return QV_INVALID_COMMAND_ID;
  if (record == nullptr)
    return QV_UNRECOVERABLE_ERROR;

  const root_device& device = as_it_is_now(*bound.device);
  if (!device.quirks.uses_ended_thread_locals || !thread_locals_have_ended())
    performer.run(device, record);
  else if (performer.releases)
    // The process is ending, perhaps with the dynamic loader's lock held, when another thread would wait for
    // ever.
    static_cast<object_record*>(record)->status = CL_SUCCESS;
  else
    run_on_other_thread(performer, device, record);
  return QV_OK;
}

std::int32_t call_command(qv_call_handle* handle, std::uint64_t number, void* record) {
  const slot* open = find_slot(handle);
  return open == nullptr ? QV_UNRECOVERABLE_ERROR : call_command(open->bound, number, record);
}

} // namespace qv

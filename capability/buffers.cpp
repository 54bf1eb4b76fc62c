#include "capability/buffers.h"

#include <atomic>
#include <mutex>
#include <new>
#include <unordered_set>

namespace qv {
namespace {

// The set is there as long as any buffer is, so that it needs neither a constructor at loading nor a destructor at the
// end, when other threads may still ask.
std::mutex buffers_lock;
std::unordered_multiset<cl_mem>* live_buffers = nullptr;
std::atomic<std::uint64_t> forgotten{0};

} // namespace

bool note_live_buffer(cl_mem buffer) noexcept {
  try {
    const std::lock_guard guard(buffers_lock);
    if (live_buffers == nullptr)
      live_buffers = new std::unordered_multiset<cl_mem>;
    live_buffers->insert(buffer);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void forget_buffer(cl_mem buffer) noexcept {
  const std::lock_guard guard(buffers_lock);
  ++forgotten;
  if (live_buffers == nullptr)
    return;
  if (const auto found = live_buffers->find(buffer); found != live_buffers->end())
    live_buffers->erase(found);
  if (live_buffers->empty()) {
    delete live_buffers;
    live_buffers = nullptr;
  }
}

bool is_live_buffer(cl_mem value) noexcept {
  const std::lock_guard guard(buffers_lock);
  return live_buffers != nullptr && live_buffers->count(value) != 0;
}

std::uint64_t forgotten_buffers() noexcept {
  return forgotten.load(std::memory_order_acquire);
}

} // namespace qv

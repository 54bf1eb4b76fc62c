// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tests/sweeps/faults.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#ifdef TARVA_SANITIZED
#include "tests/failing_memory.h"
#endif

namespace sweeps {

namespace {

std::atomic<bool> is_armed = false, is_in_call = false, memory_failed = false, memory_stays_short = false,
                  call_failed = false;
std::atomic<std::uint64_t> seen = 0, failing = 0;
std::atomic<std::int64_t> live = 0;

[[maybe_unused]] bool memory_fails() {
  if (!is_in_call.load(std::memory_order_relaxed) || scripted::is_inside())
    return false;
  const std::uint64_t which = ++seen;
  const bool fails =
      is_armed && failing != 0 && (which == failing || (memory_stays_short && which > failing));
  if (fails)
    memory_failed = true;
  return fails;
}

} // namespace

std::string fault::text() const {
  constexpr const char* ways[] = {"status", "transport code", "event", "size"};
  std::string words;
  if (allocation != 0)
    words += "allocation " + std::to_string(allocation) + (allocations_last ? " and all later ones" : "");
  if (call != 0)
    words += std::string(words.empty() ? "" : ", and ") + ways[static_cast<int>(how)] + " " +
             std::to_string(value) + " of call " + std::to_string(call) +
             (calls_last ? " and all later ones" : "");
  return words.empty() ? "no fault" : words;
}

void arm(const fault& planned) {
  seen = 0;
  failing = planned.allocation;
  memory_stays_short = planned.allocations_last;
  memory_failed = false;
  call_failed = false;
  if (planned.call != 0)
    scripted::fail_any(planned.how, planned.call, planned.value, planned.calls_last);
  is_armed = true;
}

void disarm() {
  is_armed = false;
  scripted::no_failure_left();
  call_failed = scripted::any_was_failed();
}

bool allocation_has_failed() {
  return memory_failed;
}
bool call_has_failed() {
  return call_failed;
}

inside_call::inside_call() {
  is_in_call = true;
}
inside_call::~inside_call() {
  is_in_call = false;
}

std::uint64_t allocations_seen() {
  return seen;
}
std::int64_t live_allocations() {
  return live;
}

} // namespace sweeps

#ifdef TARVA_SANITIZED
namespace {
// A sanitizer has an allocator of its own, so only what C++ asks for can fail, and nothing is counted.
[[gnu::constructor]] void fail_by_operator_new() {
  is_exempt = [] { return !sweeps::memory_fails(); };
  failing_allocation = 1;
  failure_lasts = true;
}
} // namespace
#else

// In the place of the C library's, for everything in the process that asks for memory.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

template <class Allocate>
void* allocate(Allocate allocate) {
  void* const memory = sweeps::memory_fails() ? nullptr : allocate();
  if (memory == nullptr)
    errno = ENOMEM;
  else
    ++sweeps::live;
  return memory;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {
void* malloc(std::size_t size) {
  return allocate([=] { return __libc_malloc(size); });
}
void* calloc(std::size_t count, std::size_t size) {
  return allocate([=] { return __libc_calloc(count, size); });
}
void* realloc(void* memory, std::size_t size) {
  if (memory == nullptr)
    return malloc(size);
  return sweeps::memory_fails() ? nullptr : __libc_realloc(memory, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return allocate([=] { return __libc_memalign(alignment, size); });
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  *memory = memalign(alignment, size);
  return *memory != nullptr ? 0 : ENOMEM;
}
void free(void* memory) {
  if (memory != nullptr)
    --sweeps::live;
  __libc_free(memory);
}
}
#pragma GCC visibility pop
#endif

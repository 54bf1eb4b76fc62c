// The system calls that threads sleep and wake by.
#pragma once

#include <atomic>
#include <climits>
#include <cstdint>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace oryn::tarva::library {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

// The system compares the word with `seen` and falls asleep in one step, or returns at once. May also return without a
// wake-up, so callers read their condition again.
inline void sleep_on(const std::atomic<std::uint32_t>& word, std::uint32_t seen) {
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
}

// Wakes `count` of those who sleep on the word. The address alone counts, so the word itself may be gone.
inline void wake(const std::atomic<std::uint32_t>* word, int count = INT_MAX) {
  syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

} // namespace oryn::tarva::library

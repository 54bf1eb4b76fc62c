#include "abi/host_threads.h"

#include "base/masked_signals.h"

#include <array>
#include <atomic>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <unistd.h>

namespace oryn::tarva::library {

thread_local constinit bool host_threads::is_noted = false;

namespace {

constinit std::atomic<long> noted_threads = 0;
constinit std::atomic<pthread_key_t> ending_key = 0;
constinit std::atomic<pid_t> process = 0;

std::string_view field_of(std::string_view status, std::string_view name) {
  const std::size_t place = status.find(name);
  return place == status.npos ? std::string_view() : status.substr(place + name.size());
}

// What a thread of this process blocks; nothing of one that has ended.
std::optional<std::uint64_t> signal_mask_of(long thread) {
  std::array<char, 64> path{};
  std::snprintf(path.data(), path.size(), "/proc/self/task/%ld/status", thread);
  const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
  if (file < 0)
    return std::nullopt;
  std::array<char, 4096> text{};
  const ssize_t length = read(file, text.data(), text.size());
  close(file);
  const std::string_view status(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  const std::string_view state = field_of(status, "\nState:\t"), blocked = field_of(status, "\nSigBlk:\t");
  std::uint64_t mask = 0;
  if (state.starts_with('Z') || state.starts_with('X') ||
      std::from_chars(blocked.data(), blocked.data() + blocked.size(), mask, 16).ec != std::errc())
    return std::nullopt;
  return mask;
}

// Of threads that have the signal mask of this one it is taken for granted that they are no threads of the host, which
// has no reason to choose that very mask.
bool is_only_among_its_like() {
  const std::unique_ptr<DIR, int (*)(DIR*)> threads(opendir("/proc/self/task"), closedir);
  const auto own_mask = signal_mask_of(gettid());
  if (!threads || !own_mask)
    return false;
  while (const dirent* const entry = readdir(threads.get())) {
    const long thread = std::atol(entry->d_name);
    if (thread != 0 && signal_mask_of(thread).value_or(*own_mask) != *own_mask)
      return false;
  }
  return true;
}

// A thread that ends takes the mask of the workers, so that the last one does not wait for it.
void leave_or_stay() noexcept {
  const sigset_t sent = signals_sent_to_a_process();
  sigset_t own{};
  pthread_sigmask(SIG_SETMASK, &sent, &own);
  const bool is_last = noted_threads.fetch_sub(1) == 1;
  if (!is_last || getpid() != process || !is_only_among_its_like()) // a forked child has no workers
    return;
  pthread_sigmask(SIG_SETMASK, &own, nullptr);
  while (true)
    pause();
}

// The value of a thread counts the rounds in which the system calls such destructors. The last one is left to sanitizers,
// which take down then what a thread needs to call anything at all.
constexpr std::array<char, PTHREAD_DESTRUCTOR_ITERATIONS - 1> rounds{};

// Comes back until the last of them, when the host's own destructors have run.
void end_thread(void* round) noexcept {
  const char* const next = static_cast<const char*>(round) + 1;
  if (next == rounds.data() + rounds.size() || pthread_setspecific(ending_key, next) != 0)
    leave_or_stay();
}

} // namespace

host_threads::host_threads() noexcept : has_key_(pthread_key_create(&key_, end_thread) == 0) {
  ending_key = key_;
  process = getpid();
}

host_threads::~host_threads() {
  if (has_key_)
    pthread_key_delete(key_);
}

void host_threads::note_new_thread() noexcept {
  is_noted = true;
  if (!has_key_)
    return;
  ++noted_threads;
  if (pthread_setspecific(key_, rounds.data()) != 0)
    --noted_threads;
}

} // namespace oryn::tarva::library

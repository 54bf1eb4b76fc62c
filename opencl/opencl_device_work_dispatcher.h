// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The dispatcher of one device with its worker, and what other devices tell it.
#pragma once

#include "base/native_thread.h"
#include "base/notifier.h"
#include "base/thread_annotations.h"
#include "ir/dag.h"
#include "objects/library_device.h"
#include "opencl/opencl_stage.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// The signals that the releases of other devices have sent to one device, each until its acquire takes it. A signal counts
// only once the worker has taken it over, so that what it sees does not change in the middle of a sweep. No lock of its own:
// the dispatcher's guards it.
class acquire_set {
public:
  using key = std::tuple<std::shared_ptr<library_device>, std::shared_ptr<library_device>, std::uint64_t>;
  static key key_of(const synchronization_acquire& acquire);

  // For `acquires` more acquires than before. Their signals then need no memory any more, on whichever thread they come.
  void reserve_for(std::size_t acquires);
  // For as many that are not handed over after all.
  void forgo(std::size_t acquires) noexcept { expected_ -= acquires; }
  // An equal signal that is there already stays the only one.
  void add(const key& signal);
  bool has_new() const;
  void take_over();
  // Of the signals that have been taken over.
  bool contains(const key& signal) const;
  void remove(const key& signal);
  void clear() { signals_.clear(); }

private:
  struct entry {
    key signal;
    bool is_taken_over = false;
  };

  std::vector<entry>::const_iterator find(const key& signal) const;

  std::vector<entry> signals_;
  std::size_t expected_ = 0;
};

// Runs all device commands of one device on a thread of its own. Each graph becomes a list in the order of execution. The
// lists advance in turn, each as far as it can in one sweep: OpenCL commands, host function calls, releases, an acquire.
// So one that waits for another device holds back no other.
//
// Callers hand over work and signals under `lock_` and ring `work_pipe_`; the worker takes both over at the start of a
// sweep and runs without the lock. A failure that no command can report ends the process.
class opencl_device_work_dispatcher final : public device_work_dispatcher {
public:
  explicit opencl_device_work_dispatcher(std::unique_ptr<opencl_queues> queues);
  ~opencl_device_work_dispatcher() override;

  std::shared_ptr<prepared_work> prepare_work(const dag<std::shared_ptr<device_command>>& graph) override;
  void submit_work(const std::shared_ptr<prepared_work>& work) override;
  // For work that was prepared, and whose operation failed before it was handed over.
  void forgo_acquires(std::size_t acquires) noexcept TARVA_EXCLUDES(lock_);
  void signal_acquire(const std::shared_ptr<library_device>& release_device,
                      const std::shared_ptr<library_device>& acquire_device, std::uint64_t sync_id) override;
  void start(const std::string& thread_name) override;
  void wait_until_idle() override;
  void shutdown() override;

private:
  using lists = std::list<work_list>;

  // Lets `handover` change what `lock_` guards, and wakes the worker. Any thread.
  template <class Handover>
  void hand_over(Handover handover) TARVA_EXCLUDES(lock_);

  // The worker's functions, on its thread alone.
  void worker_main() noexcept;
  void run_until_shutdown();
  bool has_work() TARVA_EXCLUDES(lock_);
  bool can_advance(const work_list& list) const TARVA_REQUIRES(lock_);
  void take_over_pending_work() TARVA_EXCLUDES(lock_);
  void advance(work_list& list);
  void advance_past_acquire(work_list& list) TARVA_EXCLUDES(lock_);
  void wake_callers() const;

  // For whoever has joined the worker.
  void abandon_remaining_work() noexcept TARVA_EXCLUDES(lock_);

  mutex lock_;                                   // taken alone, or inside the predicate of `work_pipe_`
  bool is_busy_ TARVA_GUARDED_BY(lock_) = false; // from a hand-over until the worker holds no list
  lists pending_lists_ TARVA_GUARDED_BY(lock_);
  acquire_set acquires_ TARVA_GUARDED_BY(lock_);
  std::condition_variable became_idle_;          // with `lock_`
  std::atomic<bool> shutdown_requested_ = false; // written under `lock_`, read anywhere; never goes back
  notifier work_pipe_;
  native_thread worker_;

  // The worker's own, and its owner's once it has been joined.
  lists work_lists_;
  opencl_stage opencl_stage_;
};

} // namespace oryn::tarva::library::device_ir::opencl

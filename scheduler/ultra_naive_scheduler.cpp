#include "scheduler/ultra_naive_scheduler.h"

#include "ir/logical_operation.h"

namespace oryn::tarva::library {

// One call of submit(). If the work succeeds, the worker passes the turn on; otherwise the caller's thread does.
class ultra_naive_scheduler::turn final : public fair_mutex::place,
                                          private logical_ir::logical_operation::turn_holder {
public:
  turn(ultra_naive_scheduler& scheduler, const std::shared_ptr<library_device>& host_device,
       const std::shared_ptr<logical_ir::logical_operation>& operation)
      : scheduler_(scheduler), host_device_(host_device), submission_(operation) {
    if (join(scheduler_.turns_))
      start();
  }
  ~turn() override {
    if (has_turn_)
      leave(scheduler_.turns_);
  }

  void finish() { submission_.finish(); }

  void take_turn() noexcept override {
    const auto held = submission_.get_operation();
    start();
  }

private:
  void start() noexcept {
    submission_.start(host_device_, scheduler_.state_, submission::host_work::on_first_device, this);
  }
  place* give_up_turn() noexcept override {
    has_turn_ = false;
    return give_up(scheduler_.turns_);
  }

  ultra_naive_scheduler& scheduler_;
  const std::shared_ptr<library_device>& host_device_;
  submission submission_;
  bool has_turn_ = true; // when the operation is complete
};

void ultra_naive_scheduler::submit(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  turn own(*this, get_host_device(devices_()), require_operation(operation));
  own.finish();
}

void ultra_naive_scheduler::forget(const std::shared_ptr<library_memory>& memory) noexcept {
  const fair_mutex::guard guard(turns_);
  free_block(state_.memory_states.remove(memory));
}

} // namespace oryn::tarva::library

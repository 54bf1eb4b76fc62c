#include "ir/synchronization.h"

namespace oryn::tarva::library::device_ir {

std::string synchronization_command::to_string() const {
  return head_ + std::string("release_device=") + std::to_string(release_device_->get_unique_identifier()) +
         ", acquire_device=" + std::to_string(acquire_device_->get_unique_identifier()) +
         ", sync_id=" + std::to_string(sync_id_) + "}";
}

void synchronization_release::run() {
  try {
    set_submitted();
    get_acquire_device()->signal_acquire(get_release_device(), get_acquire_device(), get_sync_id());
    set_complete();
  } catch (...) {
    set_error(std::current_exception());
  }
}

} // namespace oryn::tarva::library::device_ir

#include "opencl/acquire_set.h"

#include "ir/device_command.h"

#include <algorithm>
#include <stdexcept>

namespace oryn::tarva::library::device_ir {

acquire_set::key acquire_set::key_of(const synchronization_acquire& acquire) {
  return {acquire.get_release_device(), acquire.get_acquire_device(), acquire.get_sync_id()};
}

void acquire_set::reserve_for(std::size_t acquires) {
  signals_.reserve(expected_ + acquires);
  expected_ += acquires;
}

void acquire_set::add(const key& signal) {
  if (find(signal) == signals_.end())
    signals_.push_back({signal});
}

bool acquire_set::has_new() const {
  return std::any_of(signals_.begin(), signals_.end(), [](const entry& one) { return !one.is_taken_over; });
}

void acquire_set::take_over() {
  for (entry& one : signals_)
    one.is_taken_over = true;
}

bool acquire_set::contains(const key& signal) const {
  const auto found = find(signal);
  return found != signals_.end() && found->is_taken_over;
}

void acquire_set::remove(const key& signal) {
  if (!contains(signal))
    throw std::logic_error("Impossible.  Could not remove a tuple from the acquire set that is not present.");
  signals_.erase(find(signal));
  --expected_;
}

std::vector<acquire_set::entry>::const_iterator acquire_set::find(const key& signal) const {
  return std::find_if(signals_.begin(), signals_.end(),
                      [&](const entry& one) { return one.signal == signal; });
}

} // namespace oryn::tarva::library::device_ir

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/fair_mutex.h"

#include "base/notifier.h"

namespace oryn::tarva::library {

// As soon as this place knows its successor it may be left, and be gone.
void fair_mutex::place::tell(place& next) noexcept {
  next_ = &next;
  auto* const link = &link_;
  if (link->exchange(told, std::memory_order_acq_rel) == asked_for)
    wake(link, 1);
}

// Somebody has joined behind this place, but may not have got round to telling where.
fair_mutex::place& fair_mutex::place::find_next() noexcept {
  std::uint32_t seen = untold;
  if (link_.compare_exchange_strong(seen, asked_for, std::memory_order_acq_rel))
    while (link_.load(std::memory_order_acquire) != told)
      sleep_on(link_, asked_for);
  return *next_;
}

void fair_mutex::place::take_turn() noexcept {
  auto* const state = &state_;
  state->store(has_turn, std::memory_order_release);
  wake(state, 1);
}

void fair_mutex::place::sleep_until_turn() noexcept {
  while (state_.load(std::memory_order_acquire) == waiting)
    sleep_on(state_, waiting);
}

} // namespace oryn::tarva::library

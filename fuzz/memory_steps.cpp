// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Memory objects and futures, and failures on the devices.
#include "fuzz/conversation.h"

#include "tests/scripted/scripted_qv.h"

namespace fuzz {

namespace {

using op = qv::operation;

struct plan {
  void (*make)(op, int, std::int32_t);
  op operation;
  std::int32_t value;
};
// What the library has to survive. A queue that refuses a command ends the process, which is right.
constexpr plan plans[] = {
    {scripted::fail_event, op::enqueue_write_buffer, -5},
    {scripted::fail_event, op::enqueue_read_buffer, -5},
    {scripted::fail_event, op::enqueue_copy_buffer, -5},
    {scripted::fail_event, op::enqueue_fill_buffer, -5},
    {scripted::fail_event, op::enqueue_nd_range_kernel, -1000},
    {scripted::fail_call, op::create_buffer, -4},
    {scripted::fail_transport, op::create_buffer, -1},
    {scripted::fail_call, op::get_event_info, -6},
    {scripted::fail_call, op::get_device_info, -5},
    {scripted::fail_transport, op::get_device_info, -1},
    {scripted::fail_call, op::get_program_info, -5},
    {scripted::fail_call, op::get_program_build_info, -5},
    {scripted::fail_call, op::get_kernel_work_group_info, -5},
    {scripted::fail_call, op::create_program_with_source, -6},
    {scripted::fail_call, op::create_program_with_binary, -42},
    {scripted::fail_call, op::build_program, -11},
};

void plan_failure(conversation& with) {
  const plan& chosen = with.bytes.one_of(plans);
  chosen.make(chosen.operation, 1 + static_cast<int>(with.bytes.below(4)), chosen.value);
}

std::uint64_t position(conversation& with) {
  constexpr std::uint64_t positions[] = {0, 1, 2, 3, 5, 16, 511, max_elements, far, ~std::uint64_t{0}};
  return with.bytes.one_of(positions);
}

void fill(conversation& with) {
  auto* const target = with.pick<tarva_abi_memory_s>();
  const void* const value = with.rarely_null(host_block, 16);
  with.call<tarva_abi_fill_memory>(value ? with.live_only(target) : expected::failure, target, value,
                                   position(with), position(with));
}

void copy(conversation& with) {
  auto* const from = with.pick<tarva_abi_memory_s>();
  auto* const to = with.pick<tarva_abi_memory_s>();
  with.call<tarva_abi_copy_memory>(with.live_only(from, to), from, position(with), to, position(with),
                                   position(with));
}

template <auto Function>
void transfer(conversation& with) {
  auto* const memory = with.pick<tarva_abi_memory_s>();
  auto* const host = with.rarely_null(host_block, 16);
  with.keep<Function>(host ? with.live_only(memory) : expected::failure, memory, position(with),
                      position(with), host);
}

void wait(conversation& with) {
  auto* const on = with.pick<tarva_abi_future_s>();
  auto code = with.make_out<long>();
  auto failure = with.make_out<tarva_abi_error_s*>();
  const bool possible = with.handles.is_live(on) && code.wanted;
  if (!with.call<tarva_abi_wait_future>(possible ? expected::success : expected::failure, on, code.where(),
                                        failure.where()))
    return;
  with.handles.count(on, -1);
  demand(code.value <= 0 && code.value >= TARVA_ABI_RUNTIME_FAILURE, "a future ends with a result");
  if (!failure.wanted)
    return;
  demand(!failure.value == (code.value >= TARVA_ABI_OUT_OF_MEMORY), "a failed future has an error object");
  if (failure.value)
    with.handles.add(failure.value);
}

} // namespace

void allocate(conversation& with) {
  constexpr std::uint64_t counts[] = {16, 1, 3, 0, max_elements, 64, 5, far, far + 1, ~std::uint64_t{0}};
  const char* const label = with.bytes.one_of(labels);
  const std::uint64_t type =
      with.bytes.rarely(3) ? with.bytes.below(70) : std::uint64_t{TARVA_ABI_TYPE_INT32};
  const std::uint64_t count = with.bytes.one_of(counts);
  with.keep<tarva_abi_memory_allocate_typed>(
      type < 1 || type > 68 || count >= far ? expected::failure : expected::either, label, type, count);
}

const std::vector<step> memory_steps = {
    {allocate},
    {fill},
    {copy, 2},
    {transfer<tarva_abi_async_read_memory>},
    {transfer<tarva_abi_async_write_memory>},
    {wait},
    {plan_failure, 2},
};

} // namespace fuzz

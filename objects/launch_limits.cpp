// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "objects/launch_limits.h"

#include "access/common/opencl_constants.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace oryn::tarva::library {

namespace {

namespace cl = skerv::common::cl;
using kind = parameter_kind;

bool is_refusal(std::int32_t status) {
  return status == cl::invalid_arg_size || status == cl::invalid_arg_value ||
         status == cl::invalid_mem_object || status == cl::invalid_sampler ||
         status == cl::invalid_device_queue;
}

bool is_clear(std::int32_t status) {
  return status == cl::success || is_refusal(status);
}

// Of a parameter that refuses everything: by what it misses in a null handle.
kernel_parameter judge_refusals(const parameter_answers& answers) {
  switch (answers.to_zeros(sizeof(void*))) {
  case cl::invalid_mem_object:
    return {kind::image, 0};
  case cl::invalid_sampler:
    return {kind::sampler, 0};
  case cl::invalid_device_queue:
    return {kind::device_queue, 0};
  default:
    if (std::all_of(answers.zeros.begin(), answers.zeros.end(),
                    [](std::int32_t status) { return status == cl::invalid_arg_size; }))
      return {kind::other_value, 0};
    return {};
  }
}

} // namespace

// Only an answer that leaves no doubt counts: a parameter that is wrongly thought to be known would refuse good launches, while
// one that is not known is left to the device.
kernel_parameter judge(const parameter_answers& answers) {
  if (!std::all_of(answers.zeros.begin(), answers.zeros.end(), is_clear) || !is_clear(answers.null) ||
      !is_clear(answers.local))
    return {};
  std::uint8_t accepted = 0;
  for (std::size_t bit = 0; bit < answers.zeros.size(); ++bit)
    if (answers.zeros[bit] == cl::success)
      accepted = static_cast<std::uint8_t>(accepted | 1U << bit);
  const bool takes_null = answers.null == cl::success, takes_local = answers.local == cl::success;
  if (accepted != 0 && !takes_null && !takes_local)
    return {kind::value, accepted}; // all sizes: its own is not told
  if (accepted == sizeof(void*) && takes_null && !takes_local)
    return {kind::memory, kernel_parameter::memory_or_null};
  if (accepted == 0 && takes_local)
    return {kind::local_memory, kernel_parameter::local_memory};
  if (accepted == 0 && !takes_null)
    return judge_refusals(answers);
  return {};
}

bool kernel_signature::tells_something() const {
  return parameters.empty() || std::any_of(parameters.begin(), parameters.end(), [](const auto& each) {
           return each.accepted != kernel_parameter::anything && each.accepted != all_value_sizes;
         });
}

// The words are put together without blanks first, as a list of attributes may have been split inside the brackets.
std::optional<size_triple> find_required_group_size(const std::vector<std::string>& attribute_words) {
  std::string text;
  for (const std::string& word : attribute_words)
    text += word;
  constexpr std::string_view opening = "reqd_work_group_size(";
  const std::size_t found = text.find(opening);
  if (found == std::string::npos)
    return std::nullopt;
  const char* next = text.data() + found + opening.size();
  const char* const end = text.data() + text.size();
  size_triple sizes{};
  for (std::size_t dimension = 0; dimension < sizes.size(); ++dimension) {
    const auto [behind, fault] = std::from_chars(next, end, sizes[dimension]);
    if (fault != std::errc() || sizes[dimension] == 0 || behind == end ||
        *behind != (dimension < 2 ? ',' : ')'))
      return std::nullopt;
    next = behind + 1;
  }
  return sizes;
}

std::shared_ptr<const kernel_signature> signature_table::find(const std::string& name) const {
  const lock_guard guard(lock_);
  const auto found = known_.find(name);
  return found == known_.end() ? nullptr : found->second;
}

void signature_table::keep(const std::string& name, std::shared_ptr<const kernel_signature> signature) {
  const lock_guard guard(lock_);
  known_.insert_or_assign(name, std::move(signature));
}

// Bit by bit, from the highest power of four on.
std::uint64_t integer_square_root(std::uint64_t value) {
  std::uint64_t root = 0;
  for (std::uint64_t bit = 0x4000000000000000; bit != 0; bit >>= 2) {
    if (value >= root + bit) {
      value -= root + bit;
      root = (root >> 1) + bit;
    } else {
      root >>= 1;
    }
  }
  return root;
}

// Three bits of the value give one bit of the root.
std::uint64_t integer_cube_root(std::uint64_t value) {
  std::uint64_t root = 0;
  for (int shift = 63; shift >= 0; shift -= 3) {
    root *= 2;
    const std::uint64_t step = 3 * root * (root + 1) + 1;
    const std::uint64_t shifted = step << shift;
    if (shifted >> shift == step && shifted <= value) {
      value -= shifted;
      ++root;
    }
  }
  return root;
}

} // namespace oryn::tarva::library

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Questions to OpenCL: the value of one parameter of a platform, device, context or kernel.
//
// All of OpenCL's query functions end alike, in the name of the parameter, the size and place for its value, and a place for
// the true size. So one template asks any of them. What cannot be known is nothing, and no failure: a caller says by itself
// what it takes for granted then.
//
// Any thread may ask. The texts and lists take memory and throw std::bad_alloc; numbers and values take none.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qv {

// Asks `query` for parameter `name` of what `about` names: the object, and what else the function takes before the name.
// A status. An answer narrower than `value` fills its low bytes and leaves the others.
template <class Value, class Query, class... Objects>
cl_int ask_value(Value& value, cl_uint name, Query query, Objects... about) noexcept {
  // NOLINTNEXTLINE(bugprone-sizeof-expression): of a handle, too, which is a pointer
  return call_or_refuse(query, about..., name, sizeof value, static_cast<void*>(&value),
                        static_cast<std::size_t*>(nullptr));
}

// A text, up to its first zero. Nothing if it cannot be had in one piece: it is refused, longer than any such text is, or
// its length differs between two questions.
template <class Query, class Object>
std::optional<std::string> ask_text(cl_uint name, Query query, Object object) {
  constexpr std::size_t most_bytes = std::size_t{1} << 20; // no memory is spent on an absurd answer
  std::size_t size = 0;
  if (call_or_refuse(query, object, name, std::size_t{0}, static_cast<void*>(nullptr), &size) != CL_SUCCESS ||
      size > most_bytes)
    return std::nullopt;
  std::string text(size, '\0');
  std::size_t given = 0;
  if (size != 0 &&
      (call_or_refuse(query, object, name, size, static_cast<void*>(text.data()), &given) != CL_SUCCESS ||
       given != size))
    return std::nullopt;
  if (const std::size_t end = text.find('\0'); end != std::string::npos)
    text.resize(end);
  return text;
}

std::optional<std::string> platform_text(const opencl_functions& cl, cl_platform_id platform,
                                         cl_platform_info name);
std::optional<std::string> device_text(const opencl_functions& cl, cl_device_id device, cl_device_info name);

// A number, flag or bit field of up to 64 bits.
std::optional<std::uint64_t> platform_number(const opencl_functions& cl, cl_platform_id platform,
                                             cl_platform_info name) noexcept;
std::optional<std::uint64_t> device_number(const opencl_functions& cl, cl_device_id device,
                                           cl_device_info name) noexcept;

// The devices of a context; none if it does not tell.
std::vector<cl_device_id> context_devices(const opencl_functions& cl, cl_context context);

} // namespace qv

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

/// @file
/// TARVA for C++17: a thin layer over tarva_abi.h, in headers alone.
///
/// Every handle has an owner that gives it up, failures are exceptions with the library's messages, memory objects
/// know the type of their elements, and kernels are called like functions:
///
///     const tarva::device device = tarva::best_device();
///     const auto scale = device.build(source).kernel<float, tarva::memory<float>>("scale");
///     const tarva::memory<float> data(std::vector<float>(1000, 1.0F));
///     scale(tarva::range::items(1000), 2, data);
///     const std::vector<float> result = data.read();
///
/// All that tarva_abi.h says about order, threads and moves holds here, too. Nothing is added to the calls: a
/// launch or a transfer costs what the same calls cost in C. What an object of this layer owns, get() gives to the
/// functions of tarva_abi.h, and tarva::call calls them as the layer does itself.
#ifndef TARVA_HPP
#define TARVA_HPP

#if __cplusplus < 201703L
#error "tarva.hpp needs C++17 or later: compile with -std=c++17"
#else

#include <tarva/device.hpp>
#include <tarva/error.hpp>
#include <tarva/future.hpp>
#include <tarva/handle.hpp>
#include <tarva/kernel.hpp>
#include <tarva/memory.hpp>
#include <tarva/program.hpp>
#include <tarva/property.hpp>
#include <tarva/range.hpp>
#include <tarva/result.hpp>
#include <tarva/types.hpp>
#include <tarva/view.hpp>

#endif
#endif

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Numbers of Python as the numbers that kernels take.
#include "classes.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace tarva::python {
namespace {

/// The least and the largest of a type. The types stand in the order of their numbers in the library.
struct limits {
  long long lowest;
  unsigned long long highest;
};
template <class T>
constexpr limits limits_of{std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};

constexpr std::array<limits, 8> integers{
    limits_of<std::uint8_t>,  limits_of<std::int8_t>,  limits_of<std::uint16_t>, limits_of<std::int16_t>,
    limits_of<std::uint32_t>, limits_of<std::int32_t>, limits_of<std::uint64_t>, limits_of<std::int64_t>};

bool store_integer(const limits& within, PyObject* number, std::uint64_t& word) {
  const reference integer(PyNumber_Index(number));
  if (!integer)
    return false;
  if (within.lowest == 0) {
    const unsigned long long value = PyLong_AsUnsignedLongLong(integer.get());
    word = value;
    return PyErr_Occurred() == nullptr && value <= within.highest;
  }
  const long long value = PyLong_AsLongLong(integer.get());
  word = static_cast<std::uint64_t>(value); // the host is little-endian: the lowest bytes come first
  return PyErr_Occurred() == nullptr && value >= within.lowest &&
         (value < 0 || static_cast<unsigned long long>(value) <= within.highest);
}

bool store_float(PyObject* number, std::uint64_t& word) {
  const double value = PyFloat_AsDouble(number);
  const auto nearest = static_cast<float>(value);
  std::memcpy(&word, &nearest, sizeof nearest);
  return PyErr_Occurred() == nullptr && std::isinf(nearest) == std::isinf(value);
}

bool store_double(PyObject* number, std::uint64_t& word) {
  const double value = PyFloat_AsDouble(number);
  std::memcpy(&word, &value, sizeof value);
  return PyErr_Occurred() == nullptr;
}

} // namespace

bool store_number(tarva_abi_data_type type, PyObject* number, std::uint64_t& word) {
  if (type >= TARVA_ABI_TYPE_UINT8 && type <= TARVA_ABI_TYPE_INT64)
    return store_integer(integers[type - TARVA_ABI_TYPE_UINT8], number, word);
  if (type == TARVA_ABI_TYPE_FLOAT)
    return store_float(number, word);
  return type == TARVA_ABI_TYPE_DOUBLE && store_double(number, word);
}

} // namespace tarva::python

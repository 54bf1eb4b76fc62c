// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What has a tree of properties, and how such a tree is walked.
#pragma once

#include "properties/data_type.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace oryn::tarva::library {

class property_base;

// The keys from the root of the tree down to one property; the first is always "ROOT".
using property_path = std::vector<std::string>;

// For owners without a catalogue, which tell their few paths apart one by one.
inline bool is_path(const property_path& path, std::initializer_list<std::string_view> keys) {
  return std::equal(path.begin(), path.end(), keys.begin(), keys.end());
}

// A value where it lies: whoever made the view sees to it that it stays there. Strings are an array of pointers.
struct value_view {
  data_type type{}; // 0: no value
  std::uint64_t element_count = 0;
  const void* data = nullptr;

  bool has_data() const { return type != data_type{}; }
};

// What a property says of itself, where it lies.
struct property_labels {
  std::string_view name;
  std::string_view friendly_name;
  std::string_view description;
};

// Is told of properties one by one, in the order of their tree, on the thread that walks it. The writers of text are
// visitors.
class property_visitor {
public:
  virtual ~property_visitor() = default;

  // What comes until the matching end() is below this property. Both views stand for as long as the call lasts.
  virtual void begin(const property_labels& labels, const value_view& value) = 0;
  virtual void end() = 0;
  // A child that is listed, but not there.
  virtual void visit_empty() = 0;
};

// Base of everything that has a property tree: devices, programs, kernels, memory objects and errors. The tree is not
// stored: each question is answered from the object's present state, on the thread that asks, which may be any. A
// question to OpenCL that fails throws, and so does want of memory; nothing has changed then.
class property_interface {
public:
  virtual ~property_interface() = default;

  // An unknown path gives an empty property, never a null pointer.
  virtual std::shared_ptr<property_base> get_property(property_path path) = 0;
  virtual std::vector<std::string> get_child_names(const property_path& path) = 0;
  // Shows everything below the property at `path`: what the other two would give, in the same order. To be
  // overridden where this can be had for less.
  virtual void visit_descendants(const property_path& path, property_visitor& visitor);
};

} // namespace oryn::tarva::library

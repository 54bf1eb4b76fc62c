// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The seven kinds of handle: the records behind the opaque pointers of the interface, the library objects that these stand
// for, and the words in which a wrong handle is refused. A new kind is a new record and a new handle_traits.
#pragma once

#include <tarva_abi.h>

// What stands behind an opaque handle: one word, the object kind. A property's record is public.
struct tarva_abi_device_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_program_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_kernel_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_memory_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_future_s {
  tarva_abi_object_kind kind;
};
struct tarva_abi_error_s {
  tarva_abi_object_kind kind;
};

namespace oryn::tarva::library {

// Only named here, so that handles can be passed on without what they stand for.
class error_object;
class library_device;
class library_future;
class library_kernel;
class library_memory;
class library_program;
class property_base;

// What differs between the kinds. A kind without a null_message or a wrong_kind_message does not make that test: a look-up
// refuses the handle all the same.
template <class Record>
struct handle_traits;

// The caller may hold several references to the handle, or exactly one.
struct counted_kind {
  static constexpr bool counted = true;
};
struct single_owner_kind {
  static constexpr bool counted = false;
};

// The texts are those that callers and logs have always seen, with their small differences.
//
//   null_message        a NULL handle was to be retained, released or ended
//   wrong_kind_message  a live handle of another kind was
//   unknown_message     an address that is no live handle was to be ended
//   leak_line           the stop found the handle alive; with the count, where there is one
template <>
struct handle_traits<tarva_abi_device_s> : counted_kind {
  using object = library_device;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_DEVICE;
  static constexpr const char* null_message = "ABI device argument is nullptr and this was not expected.";
  static constexpr const char* wrong_kind_message = "ABI device argument is not actually a device object.";
  static constexpr const char* leak_line =
      "User reference count of device {} is {}, but expected a count of 0.";
};

template <>
struct handle_traits<tarva_abi_program_s> : counted_kind {
  using object = library_program;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_PROGRAM;
  static constexpr const char* null_message = "ABI program argument is nullptr and this was not expected.";
  static constexpr const char* wrong_kind_message = "ABI program argument is not actually a program object.";
  static constexpr const char* leak_line =
      "User reference count of program {} is {}, but expected a count of 0.";
};

template <>
struct handle_traits<tarva_abi_kernel_s> : counted_kind {
  using object = library_kernel;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_KERNEL;
  static constexpr const char* null_message = "ABI kernel argument is nullptr and this was not expected.";
  static constexpr const char* wrong_kind_message = "ABI kernel argument is not actually a kernel object.";
  static constexpr const char* leak_line =
      "User reference count of kernel {} is {}, but expected a count of 0.";
};

template <>
struct handle_traits<tarva_abi_memory_s> : counted_kind {
  using object = library_memory;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_MEMORY;
  static constexpr const char* null_message = "ABI memory argument is nullptr and this was not expected.";
  static constexpr const char* wrong_kind_message = "ABI memory argument is not actually a memory object.";
  static constexpr const char* leak_line =
      "User reference count of memory {} is {}, but expected a count of 0.";
};

template <>
struct handle_traits<tarva_abi_future_s> : single_owner_kind {
  using object = library_future;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_FUTURE;
  static constexpr const char* null_message = "ABI future argument is nullptr and this was not expected.";
  static constexpr const char* wrong_kind_message = "ABI future argument is not actually an future object.";
  static constexpr const char* unknown_message =
      "ABI type argument is not found.  Is this a double-delete or an invalid entry?";
  static constexpr const char* leak_line = "Future object {} was not destroyed.";
};

template <>
struct handle_traits<tarva_abi_error_s> : single_owner_kind {
  using object = error_object;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_ERROR;
  static constexpr const char* wrong_kind_message = "ABI error argument is not actually an error object.";
  static constexpr const char* unknown_message =
      "ABI type argument is not found.  Is this a double-delete or an invalid entry?";
  static constexpr const char* leak_line = "Error object {} was not destroyed.";
};

// A property is named by its record alone, whatever the kind word says.
template <>
struct handle_traits<tarva_abi_property_s> : single_owner_kind {
  using object = property_base;
  static constexpr tarva_abi_object_kind kind = TARVA_ABI_OBJECT_PROPERTY;
  static constexpr const char* unknown_message =
      "Property is not found.  Is this a double-delete or an invalid entry?";
  static constexpr const char* leak_line = "Property object {} was not destroyed.";
};

// Handles with retain and release; the others end once.
template <class Record>
concept counted_handle = handle_traits<Record>::counted;

// The class of the library's object behind a handle.
template <class Record>
using object_of = typename handle_traits<Record>::object;

} // namespace oryn::tarva::library

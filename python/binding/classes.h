// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The classes of the module. Those of the package derive from them.
#ifndef TARVA_PYTHON_CLASSES_H
#define TARVA_PYTHON_CLASSES_H

#include "object.h"

#include <tarva/device.hpp>

namespace tarva::python {

using device_content = handle_content<device>;
using program_content = handle_content<program>;

/// What a declared parameter of a kernel takes.
struct parameter {
  enum class kind {
    any,    // nothing is declared, or something that the package converts
    number, // a number of `type`
    memory, // a memory object, whose elements are of `type` if that is one, or None
    local   // memory local to each work-group, of elements of `type`
  };
  kind takes;
  tarva_abi_data_type type;
};

using parameters = std::vector<parameter>;

struct kernel_content : handle_content<kernel> {
  using handle_content::handle_content;
  std::shared_ptr<const parameters> declared{}; // null until it is known; replaced, but never changed
};

/// A memory object, whatever the type of its elements.
struct memory_content
    : handle_content<handle<tarva_abi_memory_s, tarva_abi_retain_memory, tarva_abi_release_memory>> {
  tarva_abi_data_type type = TARVA_ABI_TYPE_NONE;
  std::uint64_t element_size = 0;
};

/// Numbers that the package has put together: the range of a launch, or a block of local memory.
struct words_content {
  enum kind_of_words { range, local } kind = range;
  std::uint64_t words[11]{};
};

extern PyTypeObject* memory_class;

/// Puts the bytes of a number into `word`. Returns whether the type is one of a number and has this one; if not, the
/// interpreter may have an exception.
bool store_number(tarva_abi_data_type type, PyObject* number, std::uint64_t& word);

void add_devices(PyObject* module);
void add_kernels(PyObject* module);
void add_memory(PyObject* module);
void add_properties(PyObject* module);

/// The object for a property, which it takes over.
PyObject* make_property(tarva_abi_property_s* owned);

/// The method _root() of a handle: the root of its properties.
template <class Content, auto GetRoot>
PyObject* root_property(PyObject* self, PyObject*) {
  return guarded([&] {
    const in_use<Content> of(self);
    tarva_abi_property_s* root = nullptr;
    call<GetRoot>(of.get(), &root);
    return make_property(root);
  });
}

} // namespace tarva::python

#endif

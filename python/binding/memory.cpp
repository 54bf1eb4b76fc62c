// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Memory objects, and the transfers between them and the buffers of numpy arrays.
#include "classes.h"

namespace tarva::python {

PyTypeObject* memory_class = nullptr;

namespace {

// _allocate(label, type, bytes of an element, count)
PyObject* allocate(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    const char* label = nullptr;
    unsigned long long type = 0, size = 0, count = 0;
    check(PyArg_ParseTuple(arguments, "sKKK", &label, &type, &size, &count) != 0);
    auto& content = content_of<memory_content>(self);
    if (content.type != TARVA_ABI_TYPE_NONE) {
      PyErr_SetString(PyExc_TypeError, "An Array is made once.");
      throw already_raised();
    }
    tarva_abi_memory_s* record = nullptr;
    call<tarva_abi_memory_allocate_typed>(label, tarva_abi_data_type{type}, std::uint64_t{count}, &record);
    content.held.emplace(record);
    content.type = type;
    content.element_size = size;
    Py_RETURN_NONE;
  });
}

/// What the arguments (start, object with bytes) of a transfer mean.
struct transfer {
  transfer(PyObject* self, PyObject* arguments, bool for_writing)
      : memory(self), bytes(object_in(arguments), for_writing) {
    if ((*memory).element_size == 0 || bytes.size() % (*memory).element_size != 0) {
      PyErr_SetString(PyExc_ValueError, "The bytes of the transfer are no whole elements.");
      throw already_raised();
    }
    count = bytes.size() / (*memory).element_size;
  }
  PyObject* object_in(PyObject* arguments) {
    PyObject* object = nullptr;
    unsigned long long first = 0;
    check(PyArg_ParseTuple(arguments, "KO", &first, &object) != 0);
    start = first;
    return object;
  }

  std::uint64_t start = 0, count = 0;
  in_use<memory_content> memory;
  buffer bytes;
};

/// Starts the transfer and waits for it, in one stretch without the lock.
template <auto Function, class Data>
void carry_out(const transfer& what) {
  note_use();
  unlocked([&] {
    tarva_abi_future_s* started = nullptr;
    tarva::call<Function>(what.memory.get(), what.start, what.count, static_cast<Data>(what.bytes.data()),
                          &started);
    future<>(started).get();
  });
}

// _read(start, writable buffer)
PyObject* read(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    carry_out<tarva_abi_async_read_memory, void*>(transfer(self, arguments, true));
    Py_RETURN_NONE;
  });
}

// _write(start, buffer)
PyObject* write(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    carry_out<tarva_abi_async_write_memory, const void*>(transfer(self, arguments, false));
    Py_RETURN_NONE;
  });
}

// _fill(start, count, bytes of one element)
PyObject* fill(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    unsigned long long start = 0, count = 0;
    const char* value = nullptr;
    Py_ssize_t size = 0;
    check(PyArg_ParseTuple(arguments, "KKy#", &start, &count, &value, &size) != 0);
    const in_use<memory_content> memory(self);
    if (static_cast<std::uint64_t>(size) != (*memory).element_size) {
      PyErr_SetString(PyExc_ValueError, "The value of a fill is no element.");
      throw already_raised();
    }
    call<tarva_abi_fill_memory>(memory.get(), static_cast<const void*>(value), std::uint64_t{start},
                                std::uint64_t{count});
    Py_RETURN_NONE;
  });
}

// _copy(start, destination, start there, count)
PyObject* copy(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    unsigned long long start = 0, to_start = 0, count = 0;
    PyObject* to = nullptr;
    check(PyArg_ParseTuple(arguments, "KO!KK", &start, memory_class, &to, &to_start, &count) != 0);
    const in_use<memory_content> source(self), destination(to);
    call<tarva_abi_copy_memory>(source.get(), std::uint64_t{start}, destination.get(),
                                std::uint64_t{to_start}, std::uint64_t{count});
    Py_RETURN_NONE;
  });
}

PyMethodDef methods[] = {
    {"_allocate", allocate, METH_VARARGS, nullptr},
    {"_read", read, METH_VARARGS, nullptr},
    {"_write", write, METH_VARARGS, nullptr},
    {"_fill", fill, METH_VARARGS, nullptr},
    {"_copy", copy, METH_VARARGS, nullptr},
    {"_root", root_property<memory_content, tarva_abi_get_memory_root_property>, METH_NOARGS, nullptr},
    TARVA_HANDLE_METHODS(memory_content)};

} // namespace

void add_memory(PyObject* module) {
  memory_class =
      add_class<memory_content>(module, "tarva._binding.Memory", methods, make_empty<memory_content>);
}

} // namespace tarva::python

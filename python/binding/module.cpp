// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The extension module: how Python reaches the library. The package tarva covers all of it.
#include "classes.h"

#include <unistd.h>

namespace tarva::python {
namespace {

pid_t first_user = 0;
PyObject* exception_maker = nullptr;

PyObject* devices_of_machine(PyObject*, PyObject* class_of_devices) {
  return guarded([&] {
    note_use();
    std::vector<device> all = unlocked([] { return devices(); });
    reference list(checked(PyList_New(0)));
    for (device& each : all) {
      const reference made(
          make_object<device_content>(reinterpret_cast<PyTypeObject*>(class_of_devices), std::move(each)));
      check(PyList_Append(list.get(), made.get()) == 0);
    }
    return list.release();
  });
}

PyObject* take_exception_maker(PyObject*, PyObject* maker) {
  Py_IncRef(maker);
  std::swap(exception_maker, maker);
  Py_DecRef(maker);
  Py_RETURN_NONE;
}

PyMethodDef functions[] = {
    {"devices", devices_of_machine, METH_O, "The devices of the machine, as objects of the given class."},
    {"set_exception_maker", take_exception_maker, METH_O, "Sets what makes an exception of a failure."},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "tarva._binding", nullptr, -1, functions, nullptr, nullptr, nullptr, nullptr};

} // namespace

void note_use() {
  if (first_user == 0)
    first_user = getpid();
}

void raise(const error& failure) {
  reference chain(PyList_New(0));
  for (const tarva::failure& each : failure.chain()) {
    const reference text(
        PyUnicode_DecodeUTF8(each.message.data(), static_cast<Py_ssize_t>(each.message.size()), "replace"));
    const reference entry(text ? Py_BuildValue("(KO)", static_cast<unsigned long long>(each.kind), text.get())
                               : nullptr);
    if (!chain || !entry || PyList_Append(chain.get(), entry.get()) != 0)
      return;
  }
  const bool is_forked_child = failure.code() == TARVA_ABI_UNKNOWN_FAILURE && getpid() != first_user;
  const reference made(chain ? PyObject_CallFunction(exception_maker, "LOO",
                                                     static_cast<long long>(failure.code()), chain.get(),
                                                     is_forked_child ? Py_True : Py_False)
                             : nullptr);
  if (made)
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.get())), made.get());
}

} // namespace tarva::python

// The name by which the interpreter asks for it.
PyMODINIT_FUNC PyInit__binding(); // NOLINT(readability-identifier-naming)

PyMODINIT_FUNC PyInit__binding() {
  using namespace tarva::python;
  return guarded([] {
    reference module(checked(PyModule_Create(&definition)));
    check(PyModule_AddStringConstant(module.get(), "version", TARVA_VERSION) == 0);
    add_devices(module.get());
    add_kernels(module.get());
    add_memory(module.get());
    add_properties(module.get());
    return module.release();
  });
}

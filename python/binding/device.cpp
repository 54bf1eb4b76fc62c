// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Devices, and the programs that are built for them.
#include "classes.h"

namespace tarva::python {
namespace {

/// The constants of a SPIR-V module, from a list of (id, type, bytes of the value) that has to outlive this.
class constants {
public:
  explicit constants(PyObject* list) {
    for (Py_ssize_t i = 0; i < PyList_Size(list); ++i) {
      unsigned long long id = 0, type = 0;
      const char* value = nullptr;
      check(PyArg_ParseTuple(checked(PyList_GetItem(list, i)), "KKy", &id, &type, &value) != 0);
      records_.push_back({id, type, value});
    }
    if (!records_.empty())
      header_ = {TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, records_.data(), records_.size()};
  }
  tarva_abi_ir_header_s* header() noexcept { return &header_; }

private:
  std::vector<tarva_abi_specialization_constant_s> records_{};
  tarva_abi_ir_header_s header_{TARVA_ABI_IR_HEADER_EMPTY, nullptr, 0};
};

// _load(class of the program, kind, data, options, label, constants) -> (program, log, success)
PyObject* load(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    PyTypeObject* class_of_program = nullptr;
    unsigned long long kind = 0;
    PyObject *data = nullptr, *list = nullptr;
    const char *options = nullptr, *label = nullptr;
    check(PyArg_ParseTuple(arguments, "O!KOssO!", &PyType_Type, &class_of_program, &kind, &data, &options,
                           &label, &PyList_Type, &list) != 0);
    const buffer bytes(data, false);
    constants with(list);
    const in_use<device_content> target(self);
    tarva_abi_build_result_s* built = nullptr;
    call<tarva_abi_load_device_ir>(target.get(), with.header(), tarva_abi_ir_type{kind},
                                   static_cast<const void*>(bytes.data()), std::uint64_t{bytes.size()},
                                   options, label, &built);
    const std::unique_ptr<tarva_abi_build_result_s, detail::give_up<tarva_abi_free_build_result>> owned(
        built);
    const reference made(make_object<program_content>(class_of_program, program(built->program)));
    const char* log = built->build_log != nullptr ? built->build_log : "";
    const reference text(
        checked(PyUnicode_DecodeUTF8(log, static_cast<Py_ssize_t>(std::strlen(log)), "replace")));
    return Py_BuildValue("(OOO)", made.get(), text.get(), built->success != 0 ? Py_True : Py_False);
  });
}

// _supports(kind, constants) -> bool
PyObject* supports(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    unsigned long long kind = 0;
    PyObject* list = nullptr;
    check(PyArg_ParseTuple(arguments, "KO!", &kind, &PyList_Type, &list) != 0);
    constants with(list);
    const in_use<device_content> target(self);
    std::uint64_t supported = 0;
    call<tarva_abi_check_device_ir_support>(target.get(), with.header(), tarva_abi_ir_type{kind},
                                            static_cast<const void*>(nullptr), std::uint64_t{0}, "",
                                            &supported);
    return PyBool_FromLong(supported != 0);
  });
}

// _builtin_program(class of the program) -> program
PyObject* builtin_program(PyObject* self, PyObject* class_of_program) {
  return guarded([&] {
    const in_use<device_content> target(self);
    tarva_abi_program_s* record = nullptr;
    call<tarva_abi_get_builtin_program>(target.get(), &record);
    return make_object<program_content>(reinterpret_cast<PyTypeObject*>(class_of_program), program(record));
  });
}

PyMethodDef methods[] = {
    {"_load", load, METH_VARARGS, nullptr},
    {"_supports", supports, METH_VARARGS, nullptr},
    {"_builtin_program", builtin_program, METH_O, nullptr},
    {"_root", root_property<device_content, tarva_abi_get_device_root_property>, METH_NOARGS, nullptr},
    TARVA_HANDLE_METHODS(device_content)};

} // namespace

void add_devices(PyObject* module) {
  add_class<device_content>(module, "tarva._binding.Device", methods, nullptr);
}

} // namespace tarva::python

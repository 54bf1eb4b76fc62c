// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Properties, as the package makes mappings of them.
#include "classes.h"

namespace tarva::python {
namespace {

PyTypeObject* property_class = nullptr;

const property& held(PyObject* self) {
  return content_of<property>(self);
}

PyObject* text_object(std::string_view from) {
  return checked(PyUnicode_DecodeUTF8(from.data(), static_cast<Py_ssize_t>(from.size()), "replace"));
}

PyObject* element(const property& of, std::size_t index) {
  switch (of.get()->data_type) {
  case TARVA_ABI_TYPE_STRING:
    return text_object(of.get<std::string_view>(index));
  case TARVA_ABI_TYPE_BOOLEAN:
    return PyBool_FromLong(of.get<bool>(index));
  default:
    return checked(PyLong_FromUnsignedLongLong(of.get<std::uint64_t>(index)));
  }
}

// value() -> None, bytes, or a list of its elements
PyObject* value(PyObject* self, PyObject*) {
  return guarded([&]() -> PyObject* {
    const property& of = held(self);
    if (!of.has_value())
      Py_RETURN_NONE;
    if (of.get()->data_type == TARVA_ABI_TYPE_UINT8)
      return checked(PyBytes_FromStringAndSize(static_cast<const char*>(of.get()->data),
                                               static_cast<Py_ssize_t>(of.size())));
    reference list(checked(PyList_New(0)));
    for (std::size_t i = 0; i < of.size(); ++i)
      check(PyList_Append(list.get(), reference(element(of, i)).get()) == 0);
    return list.release();
  });
}

// texts() -> (name, short text for people, longer text for people)
PyObject* texts(PyObject* self, PyObject*) {
  return guarded([&] {
    const property& of = held(self);
    return Py_BuildValue("(sss)", of.name(), of.friendly_name(), of.description());
  });
}

// child(name) -> the child, or None if there is none of that name
PyObject* child(PyObject* self, PyObject* arguments) {
  return guarded([&]() -> PyObject* {
    const char* name = nullptr;
    check(PyArg_ParseTuple(arguments, "s", &name) != 0);
    std::optional<property> found = unlocked([&] { return held(self).find(name); });
    if (!found)
      Py_RETURN_NONE;
    return make_object<property>(property_class, std::move(*found));
  });
}

// children() -> list
PyObject* children(PyObject* self, PyObject*) {
  return guarded([&] {
    std::vector<property> all = unlocked([&] { return held(self).children(); });
    reference list(checked(PyList_New(0)));
    for (property& each : all)
      check(PyList_Append(list.get(),
                          reference(make_object<property>(property_class, std::move(each))).get()) == 0);
    return list.release();
  });
}

// text() -> the property and all below it, as the library writes it for people
PyObject* text_of_tree(PyObject* self, PyObject*) {
  return guarded([&] { return text_object(unlocked([&] { return held(self).to_text(); })); });
}

PyMethodDef methods[] = {
    {"value", value, METH_NOARGS, nullptr},       {"texts", texts, METH_NOARGS, nullptr},
    {"child", child, METH_VARARGS, nullptr},      {"children", children, METH_NOARGS, nullptr},
    {"text", text_of_tree, METH_NOARGS, nullptr}, {nullptr, nullptr, 0, nullptr}};

} // namespace

PyObject* make_property(tarva_abi_property_s* owned) {
  return make_object<property>(property_class, owned);
}

void add_properties(PyObject* module) {
  property_class = add_class<property>(module, "tarva._binding.Property", methods, nullptr);
}

} // namespace tarva::python

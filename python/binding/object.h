// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Classes of the interpreter whose objects hold something of C++.
#ifndef TARVA_PYTHON_OBJECT_H
#define TARVA_PYTHON_OBJECT_H

#include "interpreter.h"

#include <tarva/handle.hpp>

#include <optional>
#include <utility>

namespace tarva::python {

/// How an object lies in memory: the interpreter's part, then ours.
template <class Content>
struct object_of {
  PyObject_HEAD Content content;
};

template <class Content>
Content& content_of(PyObject* object) noexcept {
  return reinterpret_cast<object_of<Content>*>(object)->content;
}

/// A new object of a class, which may be one that a Python class derives from ours.
template <class Content, class... From>
PyObject* make_object(PyTypeObject* of, From&&... from) {
  const auto allocate = reinterpret_cast<allocfunc>(PyType_GetSlot(of, Py_tp_alloc));
  PyObject* made = checked(allocate(of, 0));
  new (&content_of<Content>(made)) Content(std::forward<From>(from)...);
  return made;
}

template <class Content>
PyObject* make_empty(PyTypeObject* of, PyObject*, PyObject*) {
  return guarded([&] { return make_object<Content>(of); });
}

template <class Content>
void destroy_object(PyObject* object) {
  PyTypeObject* type = Py_TYPE(object);
  content_of<Content>(object).~Content();
  reinterpret_cast<freefunc>(PyType_GetSlot(type, Py_tp_free))(object);
  Py_DecRef(reinterpret_cast<PyObject*>(type));
}

/// Adds a class with methods to the module. The class is never given up. `make` is null if Python cannot make objects.
template <class Content, class... Slots>
PyTypeObject* add_class(PyObject* module, const char* name, PyMethodDef* methods, newfunc make,
                        Slots... slots) {
  PyType_Slot all[] = {{Py_tp_dealloc, reinterpret_cast<void*>(destroy_object<Content>)},
                       {Py_tp_methods, methods},
                       slots...,
                       {make != nullptr ? Py_tp_new : 0, reinterpret_cast<void*>(make)},
                       {0, nullptr}};
  const unsigned long flags =
      Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | (make == nullptr ? Py_TPFLAGS_DISALLOW_INSTANTIATION : 0);
  PyType_Spec spec = {name, sizeof(object_of<Content>), 0, static_cast<unsigned>(flags), all};
  auto* made = reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
  check(PyModule_AddType(module, made) == 0);
  return made;
}

/// What an object of a counted handle holds. Everything here is guarded by the interpreter's lock.
template <class Held>
struct handle_content {
  std::optional<Held> held{};
  Py_ssize_t users = 0;  // calls that use it now, in any thread
  bool given_up = false; // it is to go when the last of them has ended

  handle_content() = default;
  explicit handle_content(Held&& from) : held(std::move(from)) {}
  handle_content(const handle_content&) = delete;
  handle_content& operator=(const handle_content&) = delete;
  // To give a handle up can mean to wait for an operation of another thread.
  ~handle_content() noexcept(false) { drop(); }

  void drop() {
    if (std::optional<Held> last = std::exchange(held, std::nullopt))
      unlocked([&] { last.reset(); });
  }
};

/// Holds on to a handle for the length of a call, so that another thread cannot give it up meanwhile.
template <class Content>
class in_use {
public:
  explicit in_use(PyObject* object) : content_(content_of<Content>(object)) {
    if (!content_.held || content_.given_up) {
      PyErr_Format(PyExc_ValueError, "%R has been given up.", object);
      throw already_raised();
    }
    ++content_.users;
  }
  in_use(const in_use&) = delete;
  in_use& operator=(const in_use&) = delete;
  ~in_use() noexcept(false) {
    if (--content_.users == 0 && content_.given_up)
      content_.drop();
  }
  auto* get() const noexcept { return content_.held->get(); }
  Content& operator*() const noexcept { return content_; }

private:
  Content& content_;
};

/// The method close().
template <class Content>
PyObject* close_handle(PyObject* self, PyObject*) {
  return guarded([&] {
    Content& content = content_of<Content>(self);
    content.given_up = true;
    if (content.users == 0)
      content.drop();
    Py_RETURN_NONE;
  });
}

/// The method _is_closed().
template <class Content>
PyObject* is_closed(PyObject* self, PyObject*) {
  const Content& content = content_of<Content>(self);
  return PyBool_FromLong(!content.held || content.given_up);
}

/// The methods that all handles have, and the end of a table of methods.
#define TARVA_HANDLE_METHODS(Content)                                                                        \
  {"close", close_handle<Content>, METH_NOARGS, nullptr},                                                    \
      {"_is_closed", is_closed<Content>, METH_NOARGS, nullptr}, {                                            \
    nullptr, nullptr, 0, nullptr                                                                             \
  }

} // namespace tarva::python

#endif

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What every part of the extension module needs of the interpreter: references, exceptions, and the lock.
#ifndef TARVA_PYTHON_INTERPRETER_H
#define TARVA_PYTHON_INTERPRETER_H

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <tarva/error.hpp>

#include <exception>
#include <memory>
#include <new>

namespace tarva::python {

/// Thrown where the interpreter has been told already what to raise.
struct already_raised {};

struct drop_reference {
  void operator()(PyObject* object) const noexcept { Py_DecRef(object); }
};
/// A reference that belongs to its holder.
using reference = std::unique_ptr<PyObject, drop_reference>;

/// What a function of the interpreter returned, unless it has failed.
inline PyObject* checked(PyObject* result) {
  if (result == nullptr)
    throw already_raised();
  return result;
}
inline void check(bool succeeded) {
  if (!succeeded)
    throw already_raised();
}

/// Runs `body` while other threads of the interpreter may run. The body must not touch its objects.
/// The destructor may end the thread by unwinding it, if the interpreter is being finalised meanwhile.
template <class Body>
auto unlocked(Body body) {
  struct lock_again {
    PyThreadState* state = PyEval_SaveThread();
    ~lock_again() noexcept(false) { PyEval_RestoreThread(state); }
  } const at_the_end;
  return body();
}

/// Remembers the process that uses the library first: a child that is forked later cannot.
void note_use();

/// Calls a function of the library, with its arguments between `reserved` and `out_error`.
template <auto Function, class... Arguments>
void call(Arguments... arguments) {
  note_use();
  unlocked([&] { tarva::call<Function>(arguments...); });
}

/// Has the interpreter raise the exception of the package for a failure of the library.
void raise(const error& failure);

/// Runs a function that the interpreter calls, and turns exceptions into those of the interpreter.
template <class Body>
PyObject* guarded(Body body) {
  try {
    return body();
  } catch (const already_raised&) {
  } catch (const error& failure) {
    raise(failure);
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& failure) {
    PyErr_SetString(PyExc_RuntimeError, failure.what());
  }
  return nullptr;
}

/// The contiguous bytes of an object that has some, such as a numpy array.
class buffer {
public:
  buffer(PyObject* of, bool for_writing) {
    check(PyObject_GetBuffer(of, &view_, for_writing ? PyBUF_WRITABLE : PyBUF_SIMPLE) == 0);
  }
  buffer(const buffer&) = delete;
  buffer& operator=(const buffer&) = delete;
  ~buffer() { PyBuffer_Release(&view_); }

  std::size_t size() const noexcept { return static_cast<std::size_t>(view_.len); }
  /// Never null, as the library wants it.
  void* data() const noexcept { return view_.len == 0 ? const_cast<buffer*>(this) : view_.buf; }

private:
  Py_buffer view_{};
};

} // namespace tarva::python

#endif

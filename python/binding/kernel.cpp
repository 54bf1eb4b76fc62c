// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Programs and kernels. A launch is the one thing here that has to be quick.
#include "classes.h"

#include <algorithm>
#include <array>
#include <deque>
#include <memory_resource>

namespace tarva::python {
namespace {

PyTypeObject* words_class = nullptr;

// Words(is it local memory, word...)
PyObject* make_words(PyTypeObject* of, PyObject* arguments, PyObject*) {
  return guarded([&] {
    reference made(make_object<words_content>(of));
    auto& content = content_of<words_content>(made.get());
    const Py_ssize_t count = PyTuple_Size(arguments);
    check(count >= 1);
    content.kind =
        PyObject_IsTrue(PyTuple_GetItem(arguments, 0)) ? words_content::local : words_content::range;
    for (Py_ssize_t i = 1; i < count && i <= 11; ++i) {
      content.words[i - 1] = PyLong_AsUnsignedLongLong(PyTuple_GetItem(arguments, i));
      check(PyErr_Occurred() == nullptr);
    }
    return made.release();
  });
}

[[noreturn]] void refuse(PyObject* exception, const char* text, PyObject* about) {
  PyErr_Format(exception, text, about);
  throw already_raised();
}

/// Sizes of one to three dimensions: a number, or a tuple of numbers. Returns how many there are.
std::uint64_t read_sizes(PyObject* from, std::uint64_t* sizes, const char* text) {
  const bool is_tuple = PyTuple_Check(from);
  const Py_ssize_t count = is_tuple ? PyTuple_Size(from) : 1;
  if (count < 1 || count > 3)
    refuse(PyExc_ValueError, text, from);
  for (Py_ssize_t i = 0; i < count; ++i)
    if (!store_number(TARVA_ABI_TYPE_UINT64, is_tuple ? PyTuple_GetItem(from, i) : from, sizes[i])) {
      const bool is_number = PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_OverflowError);
      PyErr_Clear();
      refuse(is_number ? PyExc_ValueError : PyExc_TypeError, text, from);
    }
  return static_cast<std::uint64_t>(count);
}

bool is_words(PyObject* object, decltype(words_content::kind) kind) {
  return PyObject_TypeCheck(object, words_class) && content_of<words_content>(object).kind == kind;
}

/// What stands beside the arguments of a launch. All of it is borrowed; null and None are nothing.
struct keywords {
  PyObject *group = nullptr, *offset = nullptr, *local = nullptr;

  explicit keywords(PyObject* given) {
    if (given == nullptr)
      return;
    PyObject *name = nullptr, *value = nullptr;
    for (Py_ssize_t place = 0; PyDict_Next(given, &place, &name, &value);) {
      const auto is = [&](const char* text) { return PyUnicode_CompareWithASCIIString(name, text) == 0; };
      PyObject** const to = is("group") ? &group : is("offset") ? &offset : is("local") ? &local : nullptr;
      if (to == nullptr)
        refuse(PyExc_TypeError, "A launch has the keywords group, offset and local, not %R.", name);
      *to = value == Py_None ? nullptr : value;
    }
  }
};

tarva_abi_launch_range_s read_range(PyObject* from, const keywords& beside) {
  if (is_words(from, words_content::range)) {
    if (beside.group != nullptr || beside.offset != nullptr)
      refuse(PyExc_TypeError, "%R has groups of its own.", from);
    const std::uint64_t* words = content_of<words_content>(from).words;
    tarva_abi_launch_range_s record{words[0], {}};
    std::copy_n(words + 1, 10, record.words);
    return record;
  }
  tarva_abi_launch_range_s record{TARVA_ABI_LAUNCH_EXPLICIT, {}};
  std::uint64_t* const words = record.words;
  words[0] = read_sizes(
      from, words + 4,
      "The range of a launch is one to three numbers of work-items, as 1000 or (640, 480), not %R.");
  const auto add = [&](PyObject* given, std::uint64_t* to, const char* text) {
    if (given != nullptr && read_sizes(given, to, text) != words[0]) {
      PyErr_Format(PyExc_ValueError, "The range %R has another number of dimensions than %R.", from, given);
      throw already_raised();
    }
  };
  add(beside.offset, words + 1, "An offset is one to three numbers of work-items, not %R.");
  add(beside.group, words + 7, "A group is one to three numbers of work-items, as 64 or (16, 16), not %R.");
  return record;
}

/// The arguments of one launch as the library takes them, and what has to live until it has ended.
class launch_arguments {
public:
  launch_arguments(PyObject* kernel, PyObject* given, PyObject* local)
      : kernel_(kernel), given_(given), local_(local) {
    const std::shared_ptr<const parameters> declared = content_of<kernel_content>(kernel).declared;
    const auto positional = static_cast<std::size_t>(PyTuple_Size(given)) - 1;
    const std::size_t count = declared ? declared->size() : positional;
    if (positional != count && local == nullptr)
      refuse_count(); // before an argument is refused that only stands in the wrong place
    records_.reserve(count);
    words_.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
      add(declared ? (*declared)[i] : parameter{parameter::kind::any, TARVA_ABI_TYPE_NONE});
    if (next_given_ != positional + 1 || (local_ != nullptr && next_local_ != local_count()))
      refuse_count();
  }
  launch_arguments(const launch_arguments&) = delete;
  launch_arguments& operator=(const launch_arguments&) = delete;
  ~launch_arguments() noexcept(false) {
    for (PyObject* each : kept_)
      Py_DecRef(each);
  }

  const tarva_abi_kernel_argument_s* data() const noexcept { return records_.data(); }
  std::uint64_t size() const noexcept { return records_.size(); }

private:
  void add(const parameter& as) {
    PyObject* const argument = next(as);
    switch (as.takes) {
    case parameter::kind::number:
      return add_number(as, argument);
    case parameter::kind::local:
      return add_local(as, argument);
    default:
      if (argument == Py_None)
        records_.push_back({TARVA_ABI_ARGUMENT_NULL, 0, 0});
      else if (PyObject_TypeCheck(argument, memory_class))
        add_memory(as, argument);
      else if (as.takes == parameter::kind::any && is_words(argument, words_content::local))
        add_local_words(argument);
      else
        add_converted(argument);
    }
  }

  std::size_t local_count() const {
    return PyTuple_Check(local_) ? static_cast<std::size_t>(PyTuple_Size(local_)) : 1;
  }
  /// The next argument. Those of local memory may stand in a keyword of their own.
  PyObject* next(const parameter& as) {
    if (as.takes == parameter::kind::local && local_ != nullptr) {
      if (next_local_ == local_count())
        refuse_count();
      const std::size_t index = next_local_++;
      return PyTuple_Check(local_) ? PyTuple_GetItem(local_, static_cast<Py_ssize_t>(index)) : local_;
    }
    if (next_given_ == static_cast<std::size_t>(PyTuple_Size(given_)))
      refuse_count();
    return PyTuple_GetItem(given_, static_cast<Py_ssize_t>(next_given_++));
  }

  void add_number(const parameter& as, PyObject* argument) {
    if (!store_number(as.type, argument, words_.emplace_back()))
      refuse_argument(argument);
    records_.push_back({TARVA_ABI_ARGUMENT_VALUE, as.type, reinterpret_cast<std::uintptr_t>(&words_.back())});
  }
  void add_memory(const parameter& as, PyObject* argument) {
    const memory_content& content = content_of<memory_content>(argument);
    if (as.type != TARVA_ABI_TYPE_NONE && as.type != content.type)
      refuse_argument(argument);
    memory_.emplace_back(argument);
    records_.push_back(
        {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uintptr_t>(memory_.back().get()), 0});
  }
  void add_local(const parameter& as, PyObject* argument) {
    if (is_words(argument, words_content::local))
      return add_local_words(argument);
    std::uint64_t count = 0;
    if (!store_number(TARVA_ABI_TYPE_UINT64, argument, count))
      refuse_argument(argument);
    records_.push_back({TARVA_ABI_ARGUMENT_LOCAL_MEMORY, as.type, count});
  }
  void add_local_words(PyObject* argument) {
    const std::uint64_t* words = content_of<words_content>(argument).words;
    records_.push_back({TARVA_ABI_ARGUMENT_LOCAL_MEMORY, words[0], words[1]});
  }
  /// The package converts what is rarer: vectors, structures, and whatever says itself of which type it is.
  void add_converted(PyObject* argument) {
    const reference pair(checked(
        PyObject_CallMethod(kernel_, "_convert", "nO", static_cast<Py_ssize_t>(records_.size()), argument)));
    unsigned long long type = 0;
    PyObject* bytes = nullptr;
    check(PyArg_ParseTuple(pair.get(), "KS", &type, &bytes) != 0);
    kept_.push_back(bytes);
    Py_IncRef(bytes);
    records_.push_back(
        {TARVA_ABI_ARGUMENT_VALUE, type, reinterpret_cast<std::uintptr_t>(PyBytes_AsString(bytes))});
  }

  /// The package has the words for what does not fit.
  [[noreturn]] void refuse_argument(PyObject* argument) {
    if (PyErr_Occurred() != nullptr && !PyErr_ExceptionMatches(PyExc_TypeError) &&
        !PyErr_ExceptionMatches(PyExc_OverflowError))
      throw already_raised();
    PyErr_Clear();
    checked(
        PyObject_CallMethod(kernel_, "_refuse", "nO", static_cast<Py_ssize_t>(records_.size()), argument));
    throw std::logic_error("an argument that does not fit was not refused");
  }
  [[noreturn]] void refuse_count() {
    checked(PyObject_CallMethod(kernel_, "_refuse_count", "nO", PyTuple_Size(given_) - 1,
                                local_ != nullptr ? local_ : Py_None));
    throw std::logic_error("a wrong number of arguments was not refused");
  }

  PyObject *kernel_, *given_, *local_;
  std::size_t next_given_ = 1, next_local_ = 0; // the first that is given is the range
  // A launch with the usual number of arguments takes no storage but the stack's.
  std::array<std::byte, 2048> stack_;
  std::pmr::monotonic_buffer_resource room_{stack_.data(), stack_.size()};
  std::pmr::vector<tarva_abi_kernel_argument_s> records_{&room_};
  std::pmr::vector<std::uint64_t> words_{&room_}; // never grows: the records point to it
  std::pmr::deque<in_use<memory_content>> memory_{&room_};
  std::pmr::vector<PyObject*> kept_{&room_};
};

// kernel(range, argument..., group=, offset=, local=)
PyObject* launch(PyObject* self, PyObject* arguments, PyObject* given_keywords) {
  return guarded([&] {
    if (PyTuple_Size(arguments) == 0)
      refuse(PyExc_TypeError, "%R is launched with a range, and then its arguments.", self);
    const keywords beside(given_keywords);
    const tarva_abi_launch_range_s range = read_range(PyTuple_GetItem(arguments, 0), beside);
    const in_use<kernel_content> target(self);
    const launch_arguments all(self, arguments, beside.local);
    call<tarva_abi_kernel_call>(target.get(), all.data(), all.size(), &range);
    Py_RETURN_NONE;
  });
}

// _declare(list of (kind, type)): what the parameters take
PyObject* declare(PyObject* self, PyObject* list) {
  return guarded([&] {
    parameters declared;
    for (Py_ssize_t i = 0; i < PyList_Size(list); ++i) {
      int kind = 0;
      unsigned long long type = 0;
      check(PyArg_ParseTuple(checked(PyList_GetItem(list, i)), "iK", &kind, &type) != 0);
      declared.push_back({static_cast<parameter::kind>(kind), type});
    }
    content_of<kernel_content>(self).declared = std::make_shared<const parameters>(std::move(declared));
    Py_RETURN_NONE;
  });
}

// _kernel(class of the kernel, name) -> kernel
PyObject* kernel_of_program(PyObject* self, PyObject* arguments) {
  return guarded([&] {
    PyTypeObject* class_of_kernel = nullptr;
    const char* name = nullptr;
    check(PyArg_ParseTuple(arguments, "O!s", &PyType_Type, &class_of_kernel, &name) != 0);
    const in_use<program_content> of(self);
    tarva_abi_kernel_s* record = nullptr;
    call<tarva_abi_get_kernel>(of.get(), name, &record);
    return make_object<kernel_content>(class_of_kernel, kernel(record));
  });
}

PyMethodDef program_methods[] = {
    {"_kernel", kernel_of_program, METH_VARARGS, nullptr},
    {"_root", root_property<program_content, tarva_abi_get_program_root_property>, METH_NOARGS, nullptr},
    TARVA_HANDLE_METHODS(program_content)};

PyMethodDef kernel_methods[] = {
    {"_declare", declare, METH_O, nullptr},
    {"_root", root_property<kernel_content, tarva_abi_get_kernel_root_property>, METH_NOARGS, nullptr},
    TARVA_HANDLE_METHODS(kernel_content)};

PyMethodDef words_methods[] = {{nullptr, nullptr, 0, nullptr}};

} // namespace

void add_kernels(PyObject* module) {
  add_class<program_content>(module, "tarva._binding.Program", program_methods, nullptr);
  add_class<kernel_content>(module, "tarva._binding.Kernel", kernel_methods, nullptr,
                            PyType_Slot{Py_tp_call, reinterpret_cast<void*>(launch)});
  words_class = add_class<words_content>(module, "tarva._binding.Words", words_methods, make_words);
}

} // namespace tarva::python

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// One run of random calls: what its steps have in common.
#pragma once

#include "fuzz/handle_model.h"
#include "fuzz/target.h"

namespace fuzz {

// How a call has to end, by what the caller knows.
enum class expected { failure, either, success };

// What a parameter of a kernel takes.
enum class parameter { memory, local, value };

// One conversation with the library: the choices that are left, and what the caller holds. Each call is well
// formed as far as C can tell, and its answer is held against what the caller knows.
class conversation {
public:
  explicit conversation(input choices) : bytes(choices) {}

  // Where a call is to write a result; now and then nowhere.
  template <class T>
  struct out {
    explicit out(bool exists) : wanted(exists) {}
    T* where() { return wanted ? &value : nullptr; }
    bool is_untouched() const { return value == untouched; }
    bool wanted;
    static inline const T untouched = (T)(~std::uint64_t{0} / 3);
    T value = untouched;
  };
  template <class T>
  out<T> make_out() {
    return out<T>(!bytes.rarely(32));
  }

  // Whether the call has succeeded.
  template <auto Function, class... Arguments>
  bool call(expected how, Arguments... arguments) {
    out<tarva_abi_error_s*> error(true);
    const tarva_abi_result code = Function(nullptr, arguments..., error.where());
    check_code(how, code);
    demand(code != TARVA_ABI_OK || error.is_untouched(), "a success leaves the error alone");
    demand(code != TARVA_ABI_OUT_OF_MEMORY || !error.value, "lack of memory has no error object");
    if (code == TARVA_ABI_LOGIC_FAILURE || code == TARVA_ABI_RUNTIME_FAILURE) {
      demand(error.value && !error.is_untouched(), "a failure has an error object");
      handles.add(error.value);
    }
    return code == TARVA_ABI_OK;
  }
  // What the call makes as its last out-argument; none if it fails.
  template <auto Function, class... Arguments>
  auto make(expected how, Arguments... arguments) {
    auto made = make_out<typename made_by<decltype(Function)>::type>();
    const bool succeeded = call<Function>(made.wanted ? how : expected::failure, arguments..., made.where());
    demand(made.is_untouched() != succeeded, "a success writes its result, and a failure none");
    return succeeded ? made.value : nullptr;
  }
  // The same for a handle, which the caller then holds.
  template <auto Function, class... Arguments>
  auto keep(expected how, Arguments... arguments) {
    auto* const made = make<Function>(how, arguments...);
    if (made)
      handles.add(made);
    return made;
  }
  // A function without a result.
  template <class Record>
  void tell(void (*function)(void*, Record*), Record* handle) {
    function(nullptr, handle);
    ++calls_made;
  }

  template <class Record>
  Record* pick() {
    return handles.pick<Record>(bytes);
  }
  template <class... Handles>
  expected live_only(const Handles*... of) {
    return (handles.is_live(of) && ...) ? expected::either : expected::failure;
  }
  // Now and then NULL.
  template <class T>
  T* rarely_null(T* pointer, std::size_t rarity) {
    return bytes.rarely(rarity) ? nullptr : pointer;
  }

  input bytes;
  handle_model handles;
  std::map<const tarva_abi_kernel_s*, std::vector<parameter>> parameters;
  static inline std::uint64_t calls_made = 0;

private:
  template <class Function>
  struct made_by;
  template <class... Parameters>
  struct made_by<tarva_abi_result (*)(Parameters...)> {
    using type =
        std::remove_pointer_t<std::tuple_element_t<sizeof...(Parameters) - 2, std::tuple<Parameters...>>>;
  };
  static void check_code(expected how, tarva_abi_result code) {
    ++calls_made;
    // A device's thread is ending the process; the engine then tells with which input.
    if (code == TARVA_ABI_UNKNOWN_FAILURE)
      std::this_thread::sleep_for(std::chrono::seconds(60));
    demand(how != expected::failure || code != TARVA_ABI_OK, "what cannot work fails");
    demand(how != expected::success || code == TARVA_ABI_OK, "what has to work works");
    demand(code == TARVA_ABI_OK || code == TARVA_ABI_OUT_OF_MEMORY || code == TARVA_ABI_LOGIC_FAILURE ||
               code == TARVA_ABI_RUNTIME_FAILURE,
           "every failure is known");
  }
};

// The calls by subject. What has more ways to go stands for more choices.
struct step {
  void (*run)(conversation&);
  int choices = 1;
};
extern const std::vector<step> program_steps, memory_steps, property_steps;

// What all conversations begin with.
void get_devices(conversation& with);
void load_program(conversation& with);
void get_kernel(conversation& with);
void allocate(conversation& with);

// Larger than any memory object that can be made here.
inline constexpr std::uint64_t max_elements = 512;
alignas(128) inline std::uint8_t host_block[max_elements * 128];
inline constexpr std::uint64_t far = std::uint64_t{1} << 63;
inline constexpr const char* labels[] = {"", "a label", nullptr};

} // namespace fuzz

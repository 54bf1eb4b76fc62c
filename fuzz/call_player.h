#pragma once

#include "fuzz/handle_model.h"

#include <map>
#include <vector>

namespace fuzz {

// How a call has to end, by what the caller knows.
enum class expected { failure, either, success };

// What a parameter of a kernel takes.
enum class parameter { memory, local, value };

// Ends the process with a line on what went wrong, unless it holds.
void demand(bool holds, const char* what);

// One conversation with the library: plays the calls that an input describes, each of them well formed as far
// as C can tell, and holds every answer against what the caller knows.
class call_player {
public:
  explicit call_player(input bytes) : bytes_(bytes) {}

  void play();
  static std::uint64_t calls_made();

private:
  // Where a call is to write a result; now and then nowhere.
  template <class T>
  struct out {
    explicit out(bool exists = true) : wanted(exists) {}
    T* where() { return wanted ? &value : nullptr; }
    bool wanted;
    T value = (T)(~std::uint64_t{0} / 3); // what nothing ever writes
  };
  template <class T>
  out<T> make_out() {
    return out<T>(!bytes_.rarely(32));
  }

  template <auto Function, class... Arguments>
  bool call(expected how, Arguments... arguments);
  // The same for a function that makes one handle as its last out-argument.
  template <auto Function, class Record, class... Arguments>
  Record* make(expected how, out<Record*> made, Arguments... arguments);

  template <class Record>
  Record* pick() {
    return handles_.pick<Record>(bytes_);
  }
  template <class... Handles>
  expected live_only(const Handles*... handles) {
    return (handles_.is_live(handles) && ...) ? expected::either : expected::failure;
  }

  template <auto Function, class Record>
  void get_root();
  template <auto Function, class Record>
  void retain();
  template <auto Function, class Record>
  void release();
  template <auto Function, class Record>
  void release_all();

  void get_devices();
  void get_builtin_program();
  void check_support();
  void load_program();
  void get_kernel();
  void launch();
  void allocate();
  void fill();
  void copy();
  void read();
  void write();
  void wait();
  void get_nested_error();
  void get_child();
  void get_children();
  void write_tree();
  void plan_failure();

  struct ir_choice;
  ir_choice choose_ir();
  tarva_abi_kernel_argument_s choose_argument(parameter takes);
  void look_at(tarva_abi_property_s* property);

  input bytes_;
  handle_model handles_;
  std::map<const tarva_abi_kernel_s*, std::vector<parameter>> parameters_;
};

} // namespace fuzz

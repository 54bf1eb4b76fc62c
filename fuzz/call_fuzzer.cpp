// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Plays random conversations with the exported functions on scripted devices. After each, nothing of it may
// be left and no rule of OpenCL may have been broken.
#include "fuzz/conversation.h"

namespace {

using fuzz::conversation;

// Writes to both ends of all memory that a kernel was given.
void touch(const scripted::kernel_run& now) {
  for (const scripted::kernel_argument& one : now.arguments)
    if (one.kind == scripted::argument_kind::memory && one.size != 0) {
      one.data[0] ^= 1;
      one.data[one.size - 1] ^= 1;
    }
}

// Two devices of each version, one of either byte order; some have kernels built in.
fuzz::references start() {
  std::vector<scripted::device_options> devices;
  for (std::uint32_t i = 0; i < 2 * qv::capability_count; ++i) {
    const std::uint32_t version = i / 2 + 1;
    scripted::device_options options{"device " + std::to_string(i), {version}};
    options.little_endian = i % 2 == 0;
    if (version >= 4)
      options.info[0x103F] = scripted::text_answer("copy_all;sort_all");
    if (version % 2 == 1)
      options.info[0x1030] = scripted::text_answer("cl_khr_spir cl_khr_il_program");
    devices.push_back(options);
  }
  scripted::set_devices(devices);
  for (const char* kernel : {"add", "sum", "scratch", "fixed", "copy_all"})
    scripted::set_kernel(kernel, touch);
  std::atexit([] {
    std::fprintf(stderr, "%llu calls\n", static_cast<unsigned long long>(fuzz::conversation::calls_made));
  });
  setenv("TARVA_LOG_TARGET", "console", 0);
  setenv("TARVA_LOG_LEVEL", "critical", 0);  // why it ended the process, if it did
  tarva_abi_retain_device(nullptr, nullptr); // starts the library
  return scripted::live_objects();
}

// A call that retains or, by -1, releases.
template <int Change, auto Function, class Record>
void count(conversation& with) {
  auto* const handle = with.pick<Record>();
  with.handles.count(handle, Change);
  with.tell(Function, handle);
}

// In the order in which all that is left is released in the end.
const std::vector<fuzz::step> release_steps = {
    {count<-1, tarva_abi_release_kernel, tarva_abi_kernel_s>},
    {count<-1, tarva_abi_release_program, tarva_abi_program_s>},
    {count<-1, tarva_abi_release_memory, tarva_abi_memory_s>},
    {count<-1, tarva_abi_abandon_future, tarva_abi_future_s>},
    {count<-1, tarva_abi_release_device, tarva_abi_device_s>},
    {count<-1, tarva_abi_free_property, tarva_abi_property_s>},
    {count<-1, tarva_abi_free_error, tarva_abi_error_s>},
};
const std::vector<fuzz::step> retain_steps = {
    {count<1, tarva_abi_retain_device, tarva_abi_device_s>},
    {count<1, tarva_abi_retain_program, tarva_abi_program_s>},
    {count<1, tarva_abi_retain_kernel, tarva_abi_kernel_s>},
    {count<1, tarva_abi_retain_memory, tarva_abi_memory_s>},
};

// Every step, as often as it has choices.
std::vector<void (*)(conversation&)> all_choices() {
  std::vector<void (*)(conversation&)> choices;
  for (const auto* steps :
       {&fuzz::program_steps, &fuzz::memory_steps, &fuzz::property_steps, &retain_steps, &release_steps})
    for (const fuzz::step& one : *steps)
      choices.insert(choices.end(), static_cast<std::size_t>(one.choices), one.run);
  return choices;
}

void play(fuzz::input bytes) {
  static const auto& choices = *new auto(all_choices());
  // What all inputs build on: the first bytes choose a device, which gets a program, a kernel and memory.
  conversation with(bytes.split(2));
  for (const auto begin : {fuzz::get_devices, fuzz::load_program, fuzz::get_kernel, fuzz::allocate})
    begin(with);
  with.bytes = bytes;
  while (!with.bytes.is_empty())
    choices[with.bytes.below(choices.size())](with);
  // Behind the end of the input a live handle is picked, as long as there is one.
  for (const fuzz::step& last : release_steps)
    for (int before = with.handles.references() + 1; with.handles.references() < before;) {
      before = with.handles.references();
      last.run(with);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto& before = *new fuzz::references(start());
  play(fuzz::input(data, size));
  scripted::no_failure_left();
  fuzz::demand_balance(before);
  for (const std::string& misuse : scripted::misuses())
    fuzz::demand(false, misuse.c_str());
  return 0;
}

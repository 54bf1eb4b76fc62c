// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The six functions of libqv with whatever a caller may hand them: handles of its own, numbers of any kind, and for each command
// a record whose fields are null, absurd or right. What no library can tell, such as an address that is none, is left out.
#include "capability/qv.h"
#include "fuzz/target.h"

#include <cstring>

namespace {

using fuzz::demand;
using op = qv::operation;

// The fields of each record in their order, naturally aligned. Objects: context, queue, program, kernel, buffer, event, device,
// Platform. D, W: `n` devices, events; E: place of an event; K: room for `n` kernels; C, Q: properties of a context, a queue; T: texts;
// B, L: binaries and their lengths; t: a text; N: a name; v: bytes; z: how many; a: an argument; h: host memory; g: three sizes; s: any
// size; f: flags; o: place of a number; u: what is asked for; n: a small number; 0: nothing; R, S: the result and the status.
struct command {
  const char* fields;
  char makes = ' ';
};
constexpr command commands[] = {
    {"pDt00Sn"},      {"fcs0RS", 'b'}, {"cdfSR", 'q'}, {"dcQRS", 'q'},
    {"CnD00RS", 'c'}, {"pKoSn"},       {"pNRS", 'k'},  {"cDLBoRSn", 'p'},
    {"cDtRSn", 'p'},  {"cT0RSn", 'p'}, {"cvzRS", 'p'}, {"qbbsssWESn"},
    {"qbvzssWESn"},   {"qkgggWESnn"},  {"qbsshWESnn"}, {"qbsshWESnn"},
    {"qS"},           {"R"},           {"cuzvoS"},     {"dvouzS"},
    {"ezvoSu"},       {"ezvoSu"},      {"PtR"},        {"kzvoSu"},
    {"dkzvoSu"},      {"dpzvoSu"},     {"pzvoSu"},     {"qS"},
    {"cS"},           {"dS"},          {"eS"},         {"kS"},
    {"bS"},           {"pS"},          {"cS", 'c'},    {"dS"},
    {"eS", 'e'},      {"pS", 'p'},     {"kzaSn"},      {"pnzvS"},
};
static_assert(std::size(commands) == qv::operation_count);

constexpr std::int32_t untouched = 77;
constexpr std::size_t room = 4096;
constexpr std::uint64_t sizes[] = {1, 4, 8, 0, 2, 3, 16, 64, 256, room, ~0ull, ~3ull, 1ull << 63};
constexpr std::uint64_t small_sizes[] = {8, 4, 0, 1, 24, 64, 256, room};
constexpr const char* texts[] = {"kernel void k(global int* data, int x) {}",
                                 "",
                                 "k",
                                 "a;b",
                                 "-bad \"",
                                 "#error",
                                 "clCreateProgramWithILKHR"};
constexpr std::uint64_t queries[] = {0x1000, 0x1020, 0x1030, 0x1080, 0x1160, 0x1180,
                                     0x1190, 0x11B0, 0x11D0, 0x1280, 0};
constexpr std::uint64_t properties[][5] = {{0}, {0x1093, 2, 0}, {0x1093, 13, 0x1094, 16, 0}, {7, 7, 0}};
unsigned char host[room] = "poclbin";
unsigned char* binaries[] = {host, host, host, host, nullptr, host};

std::uint64_t word(const void* pointer) {
  return reinterpret_cast<std::uint64_t>(pointer);
}

// The addresses of the first `count` entries.
template <class T, std::size_t Size>
std::vector<std::uint64_t> places(const T (&list)[Size], std::size_t count) {
  std::vector<std::uint64_t> all;
  for (std::size_t i = 0; i < count; ++i)
    all.push_back(word(list + i));
  return all;
}

// The call handles of one device, and what was made with them.
class caller {
public:
  caller(fuzz::input choices, qv_call_handle* const* handles) : handles_(handles) {
    qv::device_of_handle_record told{};
    qv_call_capability(handles_[0], qv::command_number(op::device_of_handle, 1), &told, 0);
    void* platform = nullptr;
    qv::get_device_info_record asked{told.result, &platform, nullptr, 0x1031, sizeof platform, 0};
    qv_call_capability(handles_[0], qv::command_number(op::get_device_info, 1), &asked, 0);
    const auto any_of = [this](char field, auto... values) { values_[field] = {std::uint64_t(values)...}; };
    any_of('d', told.result), any_of('P', platform), any_of('n', 1, 0, 2, 3), any_of('f', 1, 1, 7);
    any_of('v', value_), any_of('o', answers_), any_of('K', kernels_), any_of('E', &event_);
    any_of('h', host), any_of('D', list_), any_of('W', list_), any_of('a', value_, argument_);
    values_['s'].assign(std::begin(sizes), std::end(sizes));
    values_['z'].assign(std::begin(small_sizes), std::end(small_sizes));
    values_['g'] = places(sizes, 10), values_['L'] = places(small_sizes, 5), values_['T'] = places(texts, 5);
    values_['B'] = places(binaries, 3), values_['Q'] = places(properties, 4);
    any_of('t', texts[1], texts[2], texts[3], texts[4], texts[5], texts[6]), any_of('N', texts[2], texts[1]);
    any_of('C', 0, properties[0]);
    std::fill(std::begin(value_), std::end(value_), word(host)); // where addresses are looked for
    for (const op first : {op::create_context, op::create_command_queue, op::create_program_with_source,
                           op::build_program, op::create_kernel, op::create_buffer})
      call(first, 1);
    from_ = choices;
    while (!from_.is_empty()) {
      const std::size_t chosen = from_.below(qv::operation_count + 4);
      if (chosen < qv::operation_count)
        call(static_cast<op>(chosen), static_cast<std::uint32_t>(from_.below(qv::capability_count) + 1));
      else
        call_wrongly();
    }
  }
  // Everything ends. Behind the end of the input the oldest object of a kind is picked.
  ~caller() {
    for (const auto& [kind, operation] : {std::pair{'q', op::finish},
                                          {'e', op::release_event},
                                          {'k', op::release_kernel},
                                          {'b', op::release_mem_object},
                                          {'p', op::release_program},
                                          {'q', op::release_command_queue},
                                          {'c', op::release_context}})
      for (std::size_t left = values_[kind].size(); left > 0; --left) {
        call(operation, 6);
        if (operation == op::finish)
          std::rotate(values_[kind].begin(), values_[kind].begin() + 1, values_[kind].end());
      }
  }

private:
  void call(op operation, std::uint32_t capability) {
    const std::uint64_t number = qv::command_number(operation, capability);
    if (number == 0)
      return;
    const auto& [fields, makes] = commands[static_cast<std::size_t>(operation)];
    fill_record(fields);
    const std::uint64_t first = word_at(0);
    auto& held = values_[*fields];
    if (const auto ended = std::find(held.begin(), held.end(), first);
        fuzz::is_between(op::release_command_queue, operation, op::release_program) && *fields != 'd' &&
        first != 0)
      held.erase(ended);
    demand(qv_call_capability(handles_[capability - 1], number, record_, 0) == QV_OK, "a command is reached");
    const auto status = status_at_ == 0 ? 0 : static_cast<std::int32_t>(word_at(status_at_));
    demand(status != untouched, "a command has a status");
    const bool retains = fuzz::is_between(op::retain_context, operation, op::retain_program);
    const std::uint64_t made = retains && status == 0 ? first : word_at(result_at_);
    demand(retains || makes == ' ' || (made != 0) == (status == 0), "what succeeds makes something");
    if (status == 0)
      keep(makes, made);
    demand(!has_place_for_event_ || (event_ != nullptr && status == 0), "work has an event");
    keep('e', word(event_));
    for (void* const kernel : kernels_)
      keep('k', word(kernel));
  }

  // Numbers that are none of a root device, node or command, and nothing where something has to be.
  void call_wrongly() {
    std::uint64_t list[8], *room_or_none[] = {list, nullptr};
    const std::uint64_t any[] = {from_.below(16), ~0ull, 1, 2};
    qv_call_handle *opened = nullptr, **place_or_none[] = {&opened, nullptr};
    qv_get_root_devices(from_.below(9), from_.one_of(room_or_none), from_.one_of(room_or_none), 0);
    qv_find_capability_nodes(from_.one_of(any), from_.one_of(any), from_.below(9), from_.one_of(room_or_none),
                             from_.one_of(room_or_none), 0);
    qv_create_call_handle(from_.one_of(any), from_.one_of(any), from_.one_of(place_or_none), 0);
    qv_close_call_handle(opened);
    demand(qv_call_capability(opened, 1, record_, 0) != QV_OK, "a closed handle reaches nothing");
    demand(qv_call_capability(handles_[0], 64 + from_.below(256), nullptr, 0) != QV_OK, "no such command");
  }

  void keep(char kind, std::uint64_t object) {
    if (object != 0 && kind != ' ')
      values_[kind].push_back(object);
  }
  std::uint64_t pick(char kind) {
    const auto& all = values_[kind];
    return all.empty() || from_.rarely(16) ? 0 : all[from_.below(all.size())];
  }
  std::uint64_t word_at(std::size_t place) const {
    std::uint64_t found = 0;
    std::memcpy(&found, record_ + place, sizeof found);
    return found;
  }

  void fill_record(const char* fields) {
    std::fill(std::begin(record_), std::end(record_), std::uint8_t{0});
    std::fill(std::begin(kernels_), std::end(kernels_), nullptr);
    event_ = nullptr;
    has_place_for_event_ = false;
    status_at_ = result_at_ = 0;
    for (std::size_t at = 0; *fields != '\0'; ++fields) {
      const std::size_t size = std::strchr("Snu", *fields) != nullptr ? 4 : 8;
      at = (at + size - 1) / size * size;
      if (*fields == 'S' || *fields == 'R')
        (*fields == 'S' ? status_at_ : result_at_) = at;
      const std::uint64_t chosen = choose(*fields);
      has_place_for_event_ |= *fields == 'E' && chosen != 0;
      std::memcpy(record_ + at, &chosen, size);
      at += size;
    }
  }
  std::uint64_t choose(char field) {
    if (field == 'S')
      return untouched;
    if (field == 'u')
      return from_.one_of(queries) + from_.below(16);
    if (field == 'D' || field == 'W')
      for (std::uint64_t& each : list_)
        each = pick(field == 'D' ? 'd' : 'e');
    if (field == 'a')
      argument_[0] = pick('b');
    return pick(field);
  }

  fuzz::input from_{nullptr, 0}; // behind whose end the first choice is what works
  qv_call_handle* const* handles_;
  alignas(8) unsigned char record_[96] = {};
  std::size_t status_at_ = 0, result_at_ = 0;
  bool has_place_for_event_ = false;
  void *event_ = nullptr, *kernels_[4] = {};
  std::uint64_t argument_[1] = {}, list_[4] = {}, answers_[4] = {}, value_[room / 8] = {};
  // What the fields of each kind hold, besides nothing; of objects, those that live.
  std::map<char, std::vector<std::uint64_t>> values_;
};

// The call handles of each device.
using handles = std::array<qv_call_handle*, qv::capability_count>;
std::vector<handles> start() {
  fuzz::set_up_platforms();
  setenv("QV_OPENCL_VERSIONS", "1.0,1.1,1.2,2.0,2.1,2.2", 1);
  std::uint64_t roots[std::size(fuzz::platforms)], count = 0, node = 0;
  demand(qv_get_root_devices(std::size(roots), roots, &count, 0) == QV_OK && count > 1, "there are devices");
  std::vector<handles> opened(count);
  for (std::size_t i = 0; i < opened.size(); ++i)
    for (std::uint32_t capability = 1; capability <= qv::capability_count; ++capability) {
      qv_find_capability_nodes(roots[i], capability, 1, &node, &count, 0);
      qv_create_call_handle(roots[i], node, &opened[i][capability - 1], 0);
    }
  return opened;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto& devices = *new auto(start());
  static const auto& before = *new auto(scripted::live_objects());
  fuzz::input from(data, size);
  const handles& chosen = devices[from.below(devices.size())];
  { const caller talking(from, chosen.data()); }
  // What was made to try a device is given out once, so there may be less.
  for (const auto& [kind, count] : scripted::live_objects())
    demand(kind == "device" || (before.count(kind) != 0 && count <= before.at(kind)), kind.c_str());
  scripted::forget_calls();
  return 0;
}

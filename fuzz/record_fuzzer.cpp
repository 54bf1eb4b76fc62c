// The six functions of libqv with whatever a caller may hand them: handles of its own, numbers of any kind, and for each command
// a record whose fields are null, absurd or right. What no library can tell, such as an address that is none, is left out.
#include "capability/qv.h"
#include "fuzz/target.h"

#include <cstring>

namespace {

using fuzz::demand;
using fuzz::input;
using op = qv::operation;

// The fields of each record in their order, naturally aligned. Objects: context, queue, program, kernel, buffer, event, device,
// Platform. D, W: `n` devices, events; E: place of an event; K: room for `n` kernels; Q: properties of a queue; T: texts;
// B, L: binaries and their lengths; t: a text; v: bytes; z: how many; a: an argument; h: host memory; g: three sizes; s: any
// size; f: flags; o: place of a number; u: a number; n: a small one; 0: nothing; R, S: the result and the status.
struct command {
  const char* fields;
  char makes = ' ';
};
constexpr command commands[] = {
    {"pDt00Sn"},      {"fcs0RS", 'b'}, {"cdfSR", 'q'}, {"dcQRS", 'q'},
    {"QnD00RS", 'c'}, {"pKoSn"},       {"ptRS", 'k'},  {"cDLBoRSn", 'p'},
    {"cDtRSn", 'p'},  {"cT0RSn", 'p'}, {"cvzRS", 'p'}, {"qbbsssWESn"},
    {"qbvzssWESn"},   {"qkgggWESun"},  {"qbsshWESun"}, {"qbsshWESun"},
    {"qS"},           {"R"},           {"cuzvoS"},     {"dvouzS"},
    {"ezvoSu"},       {"ezvoSu"},      {"PtR"},        {"kzvoSu"},
    {"dkzvoSu"},      {"dpzvoSu"},     {"pzvoSu"},     {"qS"},
    {"cS"},           {"dS"},          {"eS"},         {"kS"},
    {"bS"},           {"pS"},          {"cS", 'c'},    {"dS"},
    {"eS", 'e'},      {"pS", 'p'},     {"kzaSu"},      {"puzvS"},
};
static_assert(std::size(commands) == qv::operation_count);

bool is_between(op first, op operation, op last) {
  return first <= operation && operation <= last;
}

// What fields point to: any of a list, or the list itself from any entry on.
constexpr std::int32_t untouched = 77;
constexpr std::size_t room = 4096;
constexpr std::size_t sizes[] = {1, 4, 8, 0, 2, 3, 16, 64, 256, room, ~0ull, ~3ull, 1ull << 63};
constexpr std::size_t small_sizes[] = {8, 4, 0, 1, 24, 64, 256, room};
constexpr const char* texts[] = {"kernel void k(global int* data, int x) {}",
                                 "k",
                                 "",
                                 "a;b",
                                 "-bad \"",
                                 "#error",
                                 "clCreateProgramWithILKHR",
                                 nullptr};
constexpr std::uint64_t properties[][5] = {{0}, {0x1093, 2, 0}, {0x1093, 13, 0x1094, 16, 0}, {7, 7, 0}};
unsigned char host[room] = "poclbin";
unsigned char* binaries[] = {host, host, host, host, nullptr, host};

// The call handles of one device, and what was made with them.
class caller {
public:
  caller(input choices, qv_call_handle* const* handles) : from_(choices), handles_(handles) {
    qv::device_of_handle_record told{};
    qv_call_capability(handles_[0], qv::command_number(op::device_of_handle, 1), &told, 0);
    void* platform = nullptr;
    qv::get_device_info_record asked{told.result, &platform, nullptr, 0x1031, sizeof platform, 0};
    qv_call_capability(handles_[0], qv::command_number(op::get_device_info, 1), &asked, 0);
    live_ = {{'d', {told.result}}, {'P', {platform}}};
    for (const op first : {op::create_context, op::create_command_queue, op::create_program_with_source})
      call(first, 1);
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
      for (std::size_t left = live_[kind].size(); left > 0; --left) {
        call(operation, 6);
        if (operation == op::finish)
          std::rotate(live_[kind].begin(), live_[kind].begin() + 1, live_[kind].end());
      }
  }
  caller(const caller&) = delete;
  caller& operator=(const caller&) = delete;

private:
  void call(op operation, std::uint32_t capability) {
    const std::uint64_t number = qv::command_number(operation, capability);
    if (number == 0)
      return;
    const command& made_by = commands[static_cast<std::size_t>(operation)];
    const char kind = *made_by.fields;
    fill_record(made_by.fields);
    void* const first = pointer_at(0);
    if (is_between(op::release_command_queue, operation, op::release_program) && first != nullptr &&
        kind != 'd')
      live_[kind].erase(std::find(live_[kind].begin(), live_[kind].end(), first));
    demand(qv_call_capability(handles_[capability - 1], number, record_, 0) == QV_OK, "a command is reached");
    std::int32_t status = 0;
    if (status_at_ != 0)
      std::memcpy(&status, record_ + status_at_, sizeof status);
    demand(status != untouched, "a command has a status");
    const bool retains = is_between(op::retain_context, operation, op::retain_program);
    void* const made = retains && status == 0 ? first : pointer_at(result_at_);
    demand(retains || made_by.makes == ' ' || (made != nullptr) == (status == 0),
           "what succeeds makes something");
    if (status == 0)
      keep(made_by.makes, made);
    demand(!has_place_for_event_ || (event_ != nullptr && status == 0), "work has an event");
    keep('e', event_);
    for (void* const kernel : kernels_)
      keep('k', kernel);
  }

  // Numbers that are none of a root device, node or command, and nothing where something has to be.
  void call_wrongly() {
    std::uint64_t list[8], *places[] = {list, nullptr};
    const std::uint64_t any[] = {from_.below(16), ~0ull, 1, 2};
    qv_call_handle* opened = nullptr;
    qv_get_root_devices(from_.below(9), from_.one_of(places), from_.one_of(places), 0);
    qv_find_capability_nodes(from_.one_of(any), from_.one_of(any), from_.below(9), from_.one_of(places),
                             from_.one_of(places), 0);
    qv_create_call_handle(from_.one_of(any), from_.one_of(any), rarely_null(&opened), 0);
    qv_close_call_handle(opened);
    demand(qv_call_capability(opened, 1, record_, 0) != QV_OK, "a closed handle reaches nothing");
    demand(qv_call_capability(handles_[0], 64 + from_.below(256), nullptr, 0) != QV_OK, "no such command");
  }

  void keep(char kind, void* object) {
    if (object != nullptr && kind != ' ')
      live_[kind].push_back(object);
  }
  void* pick(char kind) {
    const auto& held = live_[kind];
    return held.empty() || from_.rarely(16) ? nullptr : held[from_.below(held.size())];
  }
  template <class T>
  T* rarely_null(T* pointer) {
    return from_.rarely(8) ? nullptr : pointer;
  }
  void* pointer_at(std::size_t place) const {
    void* pointer = nullptr;
    std::memcpy(&pointer, record_ + place, sizeof pointer);
    return pointer;
  }

  void fill_record(const char* fields) {
    std::fill(std::begin(record_), std::end(record_), std::uint8_t{0});
    event_ = nullptr;
    has_place_for_event_ = false;
    status_at_ = result_at_ = 0;
    std::fill(std::begin(kernels_), std::end(kernels_), nullptr);
    std::fill(std::begin(value_), std::end(value_),
              reinterpret_cast<std::uint64_t>(host)); // for binaries, addresses
    std::size_t at = 0;
    for (const char* field = fields; *field != '\0'; ++field) {
      const std::size_t size = std::strchr("Snu", *field) != nullptr ? 4 : 8;
      at = (at + size - 1) / size * size;
      if (*field == 'S' || *field == 'R')
        (*field == 'S' ? status_at_ : result_at_) = at;
      const std::uint64_t chosen = choose(*field);
      std::memcpy(record_ + at, &chosen, size);
      at += size;
    }
  }

  std::uint64_t choose(char field) {
    switch (field) {
    case 'n':
      return from_.is_empty() ? 1 : from_.below(4);
    case 'u':
      return from_.rarely(2) ? from_.below(32) << 8 | from_.below(256) : from_.below(8);
    case 's':
      return from_.one_of(sizes);
    case 'z':
      return from_.one_of(small_sizes);
    case 'f':
      return from_.rarely(8) ? 7 : 1;
    case 'S':
      return untouched;
    case '0':
    case 'R':
      return 0;
    default:
      return reinterpret_cast<std::uint64_t>(choose_pointer(field));
    }
  }

  const void* choose_pointer(char field) {
    switch (field) {
    case 'E':
      has_place_for_event_ = !from_.rarely(8);
      return has_place_for_event_ ? &event_ : nullptr;
    case 'D':
    case 'W':
      for (void*& each : list_)
        each = pick(field == 'D' ? 'd' : 'e');
      return rarely_null(list_);
    case 'a':
      argument_ = pick('b');
      return from_.rarely(2) ? static_cast<void*>(value_) : rarely_null(&argument_);
    case 'K':
      return rarely_null(kernels_);
    case 'T':
      return texts + from_.below(std::size(texts) - 3);
    case 't':
      return from_.one_of(texts);
    case 'B':
      return rarely_null(binaries + from_.below(3));
    case 'L':
      return rarely_null(small_sizes + from_.below(std::size(small_sizes) - 3));
    case 'g':
      return rarely_null(sizes + from_.below(std::size(sizes) - 3));
    case 'Q':
      return rarely_null(from_.one_of(properties));
    case 'h':
      return rarely_null(host);
    case 'v':
      return rarely_null(value_);
    case 'o':
      return rarely_null(answers_);
    default:
      return pick(field);
    }
  }

  input from_;
  qv_call_handle* const* handles_;
  std::map<char, std::vector<void*>> live_;
  alignas(8) unsigned char record_[96] = {};
  std::size_t status_at_ = 0, result_at_ = 0;
  bool has_place_for_event_ = false;
  void *event_ = nullptr, *argument_ = nullptr, *kernels_[4] = {}, *list_[4] = {};
  std::uint64_t answers_[4] = {}, value_[room / 8] = {};
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
  input from(data, size);
  const handles& chosen = devices[from.below(devices.size())];
  { const caller talking(from, chosen.data()); }
  // What was made to try a device is given out once, so there may be less.
  for (const auto& [kind, count] : scripted::live_objects())
    demand(kind == "device" || (before.count(kind) != 0 && count <= before.at(kind)), kind.c_str());
  scripted::forget_calls();
  return 0;
}

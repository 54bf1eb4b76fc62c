// The six functions of libqv with whatever a caller may hand them: handles of its own, numbers of any kind, and for each command
// a record whose fields are null, absurd or right. What no library can tell, such as an address that is none, is left out.
#include "capability/qv.h"
#include "fuzz/target.h"

#include <cstring>

namespace {

using fuzz::demand;
using fuzz::input;
using op = qv::operation;

// The fields of each record in their order, naturally aligned. Objects: context, queue, program, kernel, buffer, event, device.
//   D devices, as many as `n`       E place of an event      F a function that is told      K room for `n` kernels
//   W events, as many as `n`        P a platform             Q properties of a queue        R the result
//   T texts, l their lengths        B binaries, L their lengths, i their statuses           S the status
//   t a text    v bytes    z how many    a an argument    h memory of the host    g three sizes    s any size    f flags
//   o place of a size    m place of a number    u a number    n a small one    0 nothing
struct command {
  const char* fields;
  char makes = ' ';
};
constexpr command commands[] = {
    {"pDt00Sn"},      {"fcs0RS", 'b'}, {"cdfSR", 'q'}, {"dcQRS", 'q'},
    {"QnDF0RS", 'c'}, {"pKmSn"},       {"ptRS", 'k'},  {"cDLBiRSn", 'p'},
    {"cDtRSn", 'p'},  {"cTlRSn", 'p'}, {"cvzRS", 'p'}, {"qbbsssWESn"},
    {"qbvzssWESn"},   {"qkgggWESun"},  {"qbsshWESun"}, {"qbsshWESun"},
    {"qS"},           {"R"},           {"cuzvoS"},     {"dvouzS"},
    {"ezvoSu"},       {"ezvoSu"},      {"PtR"},        {"kzvoSu"},
    {"dkzvoSu"},      {"dpzvoSu"},     {"pzvoSu"},     {"qS"},
    {"cS"},           {"dS"},          {"eS"},         {"kS"},
    {"bS"},           {"pS"},          {"cS", 'c'},    {"dS"},
    {"eS", 'e'},      {"pS", 'p'},     {"kzaSu"},      {"puzvS"},
};
static_assert(std::size(commands) == qv::operation_count);

bool is_release(op operation) {
  return operation >= op::release_command_queue && operation <= op::release_program;
}
bool is_retain(op operation) {
  return operation >= op::retain_context && operation <= op::retain_program;
}

constexpr std::int32_t untouched = 77;
constexpr std::size_t room = 4096;
constexpr std::size_t sizes[] = {1, 4, 8, 0, 2, 3, 16, 64, 256, 4096, ~0ull, ~3ull, 1ull << 63};
constexpr std::size_t small_sizes[] = {8, 4, 0, 1, 24, 64, 256, room};
constexpr const char* texts[] = {"kernel void k(global int* data, int x) {}",
                                 "k",
                                 "",
                                 "a;b",
                                 "-w",
                                 "-bad \"",
                                 "#error",
                                 "clCreateProgramWithILKHR",
                                 nullptr};
constexpr std::uint64_t properties[][5] = {
    {0}, {0x1093, 2, 0}, {0x1093, 13, 0x1094, 16, 0}, {7, 7, 0}, {0x1093, 1, 0}};

// The call handles of one device, and what was made with them. The storage that records point to is the same for all.
class caller {
public:
  caller(input choices, qv_call_handle* const* handles) : from_(choices), handles_(handles) {
    qv::device_of_handle_record told{};
    qv_call_capability(handles_[0], qv::command_number(op::device_of_handle, 1), &told, 0);
    live_['d'] = {told.result};
    qv::get_device_info_record asked{told.result, &platform_, nullptr, 0x1031, sizeof platform_, 0};
    qv_call_capability(handles_[0], qv::command_number(op::get_device_info, 1), &asked, 0);
    for (const auto& [operation, capability] : {std::pair{op::create_context, 1u},
                                                {op::create_command_queue, 1u},
                                                {op::create_program_with_source, 1u}})
      call(operation, capability);
  }
  // Everything ends, in an order that the input no longer chooses.
  ~caller() {
    from_ = input(nullptr, 0);
    for (const auto& [kind, operation] : {std::pair{'q', op::finish},
                                          {'e', op::release_event},
                                          {'k', op::release_kernel},
                                          {'b', op::release_mem_object},
                                          {'p', op::release_program},
                                          {'q', op::release_command_queue},
                                          {'c', op::release_context}})
      for (std::size_t left = live_[kind].size(); left > 0; --left) {
        std::rotate(live_[kind].begin(), live_[kind].begin() + 1, live_[kind].end());
        call(operation, 6);
      }
  }
  caller(const caller&) = delete;
  caller& operator=(const caller&) = delete;

  bool has_ended() const { return from_.is_empty(); }

  void call_anything() {
    const std::size_t chosen = from_.below(qv::operation_count + 4);
    const auto capability = static_cast<std::uint32_t>(from_.below(qv::capability_count) + 1);
    if (chosen < qv::operation_count)
      call(static_cast<op>(chosen), capability);
    else
      call_wrongly();
  }

private:
  void call(op operation, std::uint32_t capability) {
    const std::uint64_t number = qv::command_number(operation, capability);
    if (number == 0)
      return;
    const command& made_by = commands[static_cast<std::size_t>(operation)];
    fill_record(made_by.fields);
    void* const first = pointer_at(0);
    if (is_release(operation) && first != nullptr && *made_by.fields != 'd') {
      auto& held = live_[*made_by.fields];
      held.erase(std::find(held.begin(), held.end(), first));
    }
    demand(qv_call_capability(handles_[capability - 1], number, record_, 0) == QV_OK, "a command is reached");
    const std::int32_t status = status_at_ == nullptr ? 0 : *status_at_;
    demand(status != untouched, "a command has a status");
    if (is_retain(operation) && status == 0)
      keep(made_by.makes, first);
    if (result_at_ != nullptr && made_by.makes != ' ') {
      demand((*result_at_ != nullptr) == (status == 0), "a success makes something, and a failure nothing");
      keep(made_by.makes, *result_at_);
    }
    if (event_at_ != nullptr)
      demand(event_ != nullptr && status == 0, "work has an event");
    keep('e', event_);
    for (void* const kernel : kernels_)
      keep('k', kernel);
  }

  // Numbers that are none of a root device, node or command, handles that are closed, and nothing where something has to be.
  void call_wrongly() {
    std::uint64_t list[8], count = 0;
    const std::uint64_t any[] = {from_.below(16), ~0ull, 1, 2};
    qv_call_handle* opened = nullptr;
    qv_get_root_devices(from_.below(9), from_.rarely(2) ? nullptr : list, from_.rarely(4) ? nullptr : &count,
                        0);
    qv_find_capability_nodes(from_.one_of(any), from_.one_of(any), from_.below(9),
                             from_.rarely(2) ? nullptr : list, from_.rarely(4) ? nullptr : &count, 0);
    const auto code =
        qv_create_call_handle(from_.one_of(any), from_.one_of(any), from_.rarely(4) ? nullptr : &opened, 0);
    demand((code == QV_OK) == (opened != nullptr), "a handle is opened or refused");
    qv_close_call_handle(opened);
    demand(opened == nullptr || qv_close_call_handle(opened) != QV_OK, "a closed handle is closed");
    demand(qv_call_capability(opened, 1, record_, 0) != QV_OK, "a closed handle reaches nothing");
    demand(qv_call_capability(handles_[0], 64 + from_.below(256), nullptr, 0) != QV_OK,
           "no command has that number");
  }

  void keep(char kind, void* object) {
    if (object != nullptr)
      live_[kind].push_back(object);
  }
  void* pick(char kind) {
    const auto& held = live_[kind];
    return held.empty() || from_.rarely(16) ? nullptr : held[held.size() - 1 - from_.below(held.size())];
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
    std::memset(record_, 0, sizeof record_);
    status_at_ = nullptr;
    result_at_ = nullptr;
    event_at_ = nullptr;
    event_ = nullptr;
    std::fill(std::begin(kernels_), std::end(kernels_), nullptr);
    std::fill(std::begin(value_), std::end(value_),
              reinterpret_cast<std::uint64_t>(host_)); // of binaries, addresses
    std::size_t at = 0;
    for (const char* field = fields; *field != '\0'; ++field) {
      const std::size_t size = std::strchr("Snu", *field) != nullptr ? 4 : 8;
      at = (at + size - 1) / size * size;
      const std::uint64_t chosen = choose(*field, record_ + at);
      std::memcpy(record_ + at, &chosen, size);
      at += size;
    }
  }

  std::uint64_t choose(char field, unsigned char* place) {
    switch (field) {
    case 'n':
      return from_.is_empty() ? 1 : from_.below(4);
    case 'u':
      return from_.below(2) == 0 ? from_.below(8) : from_.below(32) << 8 | from_.below(256);
    case 's':
      return from_.one_of(sizes);
    case 'z':
      return from_.one_of(small_sizes);
    case 'f':
      return from_.rarely(8) ? 7 : 1;
    case 'S':
      status_at_ = reinterpret_cast<std::int32_t*>(place);
      return untouched;
    default:
      return reinterpret_cast<std::uint64_t>(choose_pointer(field, place));
    }
  }

  const void* choose_pointer(char field, unsigned char* place) {
    switch (field) {
    case 'R':
      result_at_ = reinterpret_cast<void**>(place);
      return nullptr;
    case 'E':
      return event_at_ = rarely_null(&event_);
    case 'K':
      return rarely_null(kernels_);
    case 'D':
    case 'W':
      for (void*& each : list_)
        each = pick(field == 'D' ? 'd' : 'e');
      return rarely_null(list_);
    case 'T':
      for (const char*& each : strings_)
        each = from_.one_of(texts);
      return rarely_null(strings_);
    case 'B':
      for (const unsigned char*& each : binaries_)
        each = rarely_null(host_);
      return rarely_null(binaries_);
    case 'L':
      for (std::size_t& each : lengths_)
        each = from_.below(256);
      return rarely_null(lengths_);
    case 'g':
      for (std::size_t& each : groups_[next_groups_ = (next_groups_ + 1) % 3])
        each = from_.one_of(sizes);
      return rarely_null(groups_[next_groups_]);
    case 'a':
      argument_ = pick('b');
      return from_.rarely(2) ? static_cast<void*>(value_) : rarely_null(&argument_);
    case 'P':
      return rarely_null(static_cast<char*>(platform_));
    case 'F':
      return from_.rarely(2) ? reinterpret_cast<const void*>(&ignore) : nullptr;
    case 'Q':
      return rarely_null(from_.one_of(properties));
    case 't':
      return from_.one_of(texts);
    case 'h':
      return rarely_null(host_);
    case 'v':
      return rarely_null(value_);
    case 'i':
    case 'm':
    case 'o':
      return rarely_null(answers_);
    case '0':
    case 'l':
      return nullptr;
    default:
      return pick(field);
    }
  }

  static void ignore(const char*, const void*, std::size_t, void*) {}

  input from_;
  qv_call_handle* const* handles_;
  std::map<char, std::vector<void*>> live_;
  void* platform_ = nullptr;
  alignas(8) unsigned char record_[96];
  std::int32_t* status_at_ = nullptr;
  void **result_at_ = nullptr, **event_at_ = nullptr;
  void *event_ = nullptr, *argument_ = nullptr, *kernels_[4] = {}, *list_[4] = {};
  const char* strings_[4] = {};
  const unsigned char* binaries_[4] = {};
  std::size_t lengths_[4] = {}, groups_[3][3] = {}, next_groups_ = 0;
  std::uint64_t answers_[4] = {}, value_[room / 8] = {};
  static inline unsigned char host_[room] = "poclbin";
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
  {
    caller one(from, chosen.data());
    while (!one.has_ended())
      one.call_anything();
  }
  // What was made to try a device is given out once, so there may be less.
  for (const auto& [kind, count] : scripted::live_objects())
    demand(kind == "device" || (before.count(kind) != 0 && count <= before.at(kind)), kind.c_str());
  scripted::forget_calls();
  return 0;
}

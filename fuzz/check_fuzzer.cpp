// What libqv looks into before an implementation sees it: device binaries, SPIR-V modules and build options; and the lists of
// versions that it reads. Each verdict is held against those on inputs that differ in a known way.
#include "capability/environment.h"
#include "capability/program_checks.h"
#include "fuzz/target.h"

#include <cstring>

namespace {

using fuzz::demand;

// What the device of the context says that it takes.
std::string module_versions;

template <class T>
cl_int answer(const T* from, std::size_t length, std::size_t size, void* value, std::size_t* size_ret) {
  if (value != nullptr)
    std::memcpy(value, from, std::min(size, length));
  if (size_ret != nullptr)
    *size_ret = length;
  return CL_SUCCESS;
}

qv::opencl_functions answering_functions() {
  static int device;
  qv::opencl_functions cl;
  cl.get_context_info = [](cl_context, cl_context_info, std::size_t size, void* value,
                           std::size_t* size_ret) {
    const void* const only = &device;
    return answer(&only, sizeof only, size, value, size_ret);
  };
  cl.get_device_info = [](cl_device_id, cl_device_info, std::size_t size, void* value,
                          std::size_t* size_ret) {
    return answer(module_versions.c_str(), module_versions.size() + 1, size, value, size_ret);
  };
  return cl;
}

// Of exactly that size, so that a step beyond it is seen.
using bytes = std::vector<unsigned char>;

void check_binary(const qv::quirks& known, bytes binary) {
  const auto is_harmless = [&] { return qv::is_harmless_binary(known, binary.data(), binary.size()); };
  constexpr char magic[] = "poclbin";
  const bool is_judged =
      known.binaries == qv::binary_format::pocl
          ? binary.size() >= sizeof magic && std::memcmp(binary.data(), magic, sizeof magic) == 0
          : known.binaries != qv::binary_format::checked_by_itself;
  if (!is_harmless() || !is_judged)
    return;
  binary.push_back(0);
  demand(!is_harmless(), "a whole binary ends where it ends");
  binary.resize(binary.size() - 2);
  binary.shrink_to_fit();
  demand(binary.size() <= sizeof magic || !is_harmless(), "a whole binary lacks nothing");
}

void check_module(bytes module) {
  static const qv::opencl_functions cl = answering_functions();
  const auto is_harmless = [&] { return qv::is_harmless_module(cl, nullptr, module.data(), module.size()); };
  const bool before = is_harmless();
  if (module.size() % 4 != 0)
    return;
  for (std::size_t i = 0; i < module.size(); i += 4)
    std::reverse(&module[i], &module[i] + 4);
  demand(before == is_harmless(), "both byte orders are one module");
}

void check_options(const qv::quirks& known, const std::string& options) {
  demand(qv::are_harmless_options(known, options) == qv::are_harmless_options(known, "  " + options + " "),
         "blanks around options change nothing");
  const bool is_text = qv::is_utf8(options);
  demand(is_text == qv::is_utf8(options + "\xF0\x9F\x99\x82"), "a character more changes nothing");
  demand(!is_text || !qv::is_utf8(options + "\xE2\x82"), "half a character is none");
}

void check_versions(std::string_view list) {
  std::string unknown;
  const qv::capability_set found = qv::parse_capability_list(list, &unknown);
  demand(!found.test(0), "there is no capability 0");
  demand(found == qv::parse_capability_list(std::string(list) + ",1.7,", nullptr),
         "a wrong entry takes nothing");
  static_cast<void>(qv::parse_reported_version(list));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::input from(data, size);
  const std::size_t what = from.below(4);
  qv::quirks known = qv::quirks_of_platform(from.one_of(fuzz::platforms));
  if (what == 1) { // the versions, ended by a zero, and the module
    const void* const end = from.is_empty() ? nullptr : std::memchr(from.data(), 0, from.size());
    const auto text = from.split(end == nullptr ? 0 : static_cast<const std::uint8_t*>(end) - from.data());
    module_versions.assign(reinterpret_cast<const char*>(text.data()), text.size());
    from.below(1);
  }
  const bytes rest(from.data(), from.data() + from.size());
  const std::string text(rest.begin(), rest.end());
  if (what == 0)
    check_binary(known, rest);
  else if (what == 1)
    check_module(rest);
  else if (what == 2)
    check_options(known, text);
  else
    check_versions(text);
  return 0;
}

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tools/tarva-info/arguments.h"

#include <cctype>
#include <charconv>
#include <cstring>
#include <getopt.h>

namespace tarva_info {
namespace {

enum option_code : int { GET = 256, PROP, KERNELS, RAW, HUMAN, JSON, TEXT, XML };

constexpr const char* short_options = "+:lad:hv";
constexpr option long_options[] = {
    {"list", no_argument, nullptr, 'l'},         {"all", no_argument, nullptr, 'a'},
    {"device", required_argument, nullptr, 'd'}, {"get", required_argument, nullptr, GET},
    {"prop", required_argument, nullptr, PROP},  {"kernels", required_argument, nullptr, KERNELS},
    {"raw", no_argument, nullptr, RAW},          {"human", no_argument, nullptr, HUMAN},
    {"json", no_argument, nullptr, JSON},        {"text", no_argument, nullptr, TEXT},
    {"xml", no_argument, nullptr, XML},          {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},      {nullptr, 0, nullptr, 0}};

class parser {
public:
  arguments parse(int count, char** words) {
    // Options may follow DEVICE, so each word that is none is taken and the rest is parsed on.
    opterr = 0;
    while (optind < count) {
      const int code = getopt_long(count, words, short_options, long_options, nullptr);
      if (code != -1)
        take_option(code, words);
      else if (optind < count)
        take_device(words[optind++]);
    }
    return finish();
  }

private:
  void take_option(int code, char** words) {
    switch (code) {
    case 'l':
      return take_form(output_form::list, "--list");
    case 'a':
      is_all_ = true;
      return;
    case 'd':
      return take_device(optarg);
    case GET:
      parsed_.path = optarg;
      return take_form(output_form::value, "--get");
    case PROP:
      parsed_.key_part = optarg;
      return;
    case KERNELS:
      parsed_.program = optarg;
      return;
    case RAW:
      return take_form(output_form::raw, "--raw");
    case HUMAN:
      return take_form(output_form::tree, "--human");
    case JSON:
      return take_form(output_form::json, "--json");
    case TEXT:
      return take_form(output_form::text, "--text");
    case XML:
      return take_form(output_form::xml, "--xml");
    case 'h':
      return take_form(output_form::help, "--help");
    case 'v':
      return take_form(output_form::version, "--version");
    case ':':
      throw usage_failure(std::string(words[optind - 1]) + " needs an argument");
    default:
      throw usage_failure(describe_refused(words));
    }
  }

  // One of several letters in a word is told by optopt, and so is a known option with an argument too many; an
  // unknown long option is not.
  static std::string describe_refused(char** words) {
    const std::string word = words[optind - 1];
    if (optopt == 0)
      return "unknown option " + word;
    const bool is_known = optopt >= GET || (std::isalpha(optopt) && std::strchr(short_options, optopt));
    return is_known ? word + ": this option takes no argument"
                    : "unknown option " + std::string{'-', static_cast<char>(optopt)};
  }

  // Help is given whatever other form is asked for.
  void take_form(output_form form, const char* name) {
    if (form_name_ != nullptr && form != output_form::help && parsed_.form != form) {
      if (parsed_.form == output_form::help)
        return;
      throw usage_failure(std::string(form_name_) + " and " + name + " exclude each other");
    }
    parsed_.form = form;
    form_name_ = name;
  }

  void take_device(const char* word) {
    if (parsed_.device)
      throw usage_failure("more than one device");
    std::uint64_t number = 0;
    const char* end = word + std::strlen(word);
    const auto [stopped, error] = std::from_chars(word, end, number);
    if (error != std::errc() || stopped != end)
      throw usage_failure(std::string("not the number of a device: ") + word);
    parsed_.device = number;
  }

  arguments finish() {
    const output_form form = parsed_.form;
    if (form == output_form::help || form == output_form::version)
      return parsed_;
    if (is_all_ && parsed_.device)
      throw usage_failure("--all and a device exclude each other");
    const bool chooses = !parsed_.key_part.empty() || !parsed_.program.empty();
    if (form_name_ == nullptr && (is_all_ || parsed_.device || chooses))
      parsed_.form = output_form::tree;
    const bool is_tree = parsed_.form == output_form::tree || form == output_form::json;
    if (!parsed_.key_part.empty() && !is_tree && form != output_form::raw)
      throw usage_failure(std::string("--prop and ") + form_name_ + " exclude each other");
    if (!parsed_.program.empty() && !is_tree)
      throw usage_failure(std::string("--kernels and ") + form_name_ + " exclude each other");
    return parsed_;
  }

  arguments parsed_;
  const char* form_name_ = nullptr;
  bool is_all_ = false;
};

} // namespace

arguments parse_arguments(int count, char** words) {
  return parser().parse(count, words);
}

const char* const usage_text = R"(Usage: tarva-info [OPTION]... [DEVICE]
Shows the OpenCL devices of this machine as the TARVA library offers them.

Without DEVICE and without an option: a table of all devices. DEVICE is a
number from the first column of that table; with it alone: everything that is
to be known of that device. Options without DEVICE are for all devices.

  -l, --list        the table of devices
  -a, --all         everything of all devices
  -d, --device N    the same as DEVICE
      --get KEY     one value, such as CL_DEVICE_MAX_COMPUTE_UNITS
      --prop TEXT   only what has a key that contains TEXT
      --kernels FILE
                    the kernels of a program, from OpenCL C or SPIR-V, as they
                    are when it is built for the device
      --human       by sections, with friendly names and units (the default)
      --raw         a line for each value: [DEVICE] KEY VALUE...
      --json        for scripts
      --text        the tree as the library writes it
      --xml         the tree as the library writes it in XML
  -h, --help        this text
  -v, --version     the version

The status is 0; 1 if there is no such device or key, or something cannot be
read or built; 2 if the arguments make no sense.
)";

} // namespace tarva_info

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What a kernel's parameters take is learnt when the kernel is made; a launch that does not fit is refused before
// anything happens, and nothing is refused of which the device has not told.
#include "tests/scripted/scripted_test.h"

#include <barrier>
#include <thread>

namespace scripted {

using namespace caller;
using op = qv::operation;

// How a device answers to zeros of 1 to 128 bytes, to a null value and to a size of local memory, by letters: a point accepts,
// the others refuse with CL_INVALID_ARG_SIZE, _ARG_VALUE, _MEM_OBJECT, _SAMPLER, _DEVICE_QUEUE and _ARG_INDEX.
std::int32_t answer_by(const std::string& letters, std::size_t size, const void* value) {
  static const std::map<char, std::int32_t> statuses{{'.', 0},   {'s', -51}, {'v', -50}, {'m', -38},
                                                     {'p', -41}, {'q', -70}, {'i', -49}};
  const auto place = value != nullptr        ? static_cast<std::size_t>(std::countr_zero(size))
                     : size == sizeof(void*) ? 8
                                             : 9;
  return statuses.at(letters.at(place));
}

class parameters : public scripted_test {
protected:
  void TearDown() override {
    answer_arguments({});
    scripted_test::TearDown();
  }
  // With a kernel of one parameter, or of two.
  caller::program compile_one() const { return compile(device(3), "kernel void taker(global int* data) {}"); }
  caller::program compile_two() const {
    return compile(device(3), "kernel void taker(global int* data, global int* more) {}");
  }
  // The taker of a new program, which answers by the letters until it has been made.
  static caller::kernel make_taker(const caller::program& from, const std::string& letters) {
    answer_arguments(
        [letters](std::size_t size, const void* value) { return answer_by(letters, size, value); });
    caller::kernel made = find_kernel(from, "taker");
    answer_arguments([](std::size_t, const void*) { return 0; });
    return made;
  }
  const std::string a_buffer_of_4 = "sss.ssss.s";
};

TEST_F(parameters, are_judged_by_what_the_device_accepts) {
  const double number = 0;
  const float one = 0;
  const std::array<float, 4> four{};
  const std::uint8_t byte = 0;
  const memory numbers = make(counted(4));
  const std::map<char, std::pair<tarva_abi_kernel_argument_s, std::string>> given{
      {'n', {null_argument(), "a null argument"}},
      {'m', {argument(numbers), "a memory object of type int32_t"}},
      {'l', {local_argument(TARVA_ABI_TYPE_FLOAT, 6), "local memory of 24 bytes"}},
      {'1', {argument(byte), "a value of type uint8_t with 1 byte"}},
      {'4', {argument(one, TARVA_ABI_TYPE_FLOAT), "a value of type float with 4 bytes"}},
      {'8', {argument(number, TARVA_ABI_TYPE_DOUBLE), "a value of type double with 8 bytes"}},
      {'h', {argument(four, TARVA_ABI_TYPE_FLOAT3), "a value of type float3 with 16 bytes"}}};
  const std::string all = "nml148h";
  struct row {
    const char* answers;
    std::string fits;
    std::string refusal = {}; // a $ stands for what is given
  };
  const auto must_be = [](const char* what) {
    return std::string("must be ") + what + ", but $ was provided.";
  };
  const auto is = [](const char* what) { return std::string("is ") + what + ", which no argument can be."; };
  for (const row& each : {row{"ss.sssssvv", "4", must_be("a value of 4 bytes")},
                          {".sssssssss", "1", must_be("a value of 1 byte")},
                          {"sss..sssvv", "8h", must_be("a value of 8 or 16 bytes")},
                          {"sssssss.ss", "", must_be("a value of 128 bytes")},
                          {"........vv", "148h", must_be("a value")},
                          {"sss.ssss.s", "nm", must_be("a memory object")},
                          {"vvvvvvvv..", "l", must_be("local memory")},
                          {"vvvvvvvvs.", "l", must_be("local memory")},
                          {"sssmssssvs", "", is("an image")},
                          {"ssspssssvs", "", is("a sampler")},
                          {"sssqssssvv", "", is("a device queue")},
                          {"ssssssssvs", "", is("a value of a size that no data type has")},
                          {"..........", all}, // accepts or refuses everything, or tells a riddle
                          {"vvvvvvvvvv", all},
                          {"vvvvvvvv.v", all},
                          {"sss.ssss..", all},
                          {"s.s.ssss.s", all},
                          {"ss.sssssv.", all},
                          {"sss.ssss.i", all}}) {
    const auto taker = make_taker(compile_one(), each.answers);
    for (const auto& [letter, what] : given) {
      std::string refusal = "Argument 0 of kernel taker " + each.refusal;
      if (const auto place = refusal.find('$'); place != std::string::npos)
        refusal.replace(place, 1, what.second);
      forget_calls();
      EXPECT_EQ(launch(taker, {what.first}, line(1)),
                each.fits.find(letter) != std::string::npos ? outcome() : logic_failure(refusal))
          << each.answers << " " << letter;
      EXPECT_LE(count(take_calls(), op::set_kernel_arg), 1U) << "a launch asks nothing";
    }
  }
}

TEST_F(parameters, are_learnt_once_for_each_name_of_a_program) {
  const auto asked_for = [&](const caller::program& from) {
    forget_calls();
    make_taker(from, a_buffer_of_4);
    return count(take_calls(), op::set_kernel_arg);
  };
  const auto one = compile_one(), other = compile_one();
  EXPECT_EQ(asked_for(one), 10U);
  EXPECT_EQ(asked_for(one), 0U);
  EXPECT_EQ(asked_for(other), 10U);

  // Of several threads that make the same kernel the first alone asks.
  std::string text;
  constexpr int names = 100;
  for (int i = 0; i < names; ++i)
    text += "kernel void taker" + std::to_string(i) + "(global int* data) {}\n";
  const auto shared = compile(device(3), text);
  answer_arguments({});
  forget_calls();
  std::barrier together(4);
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int name = 0; name < names; ++name) {
        together.arrive_and_wait();
        find_kernel(shared, ("taker" + std::to_string(name)).c_str());
      }
    });
  threads.clear();
  EXPECT_EQ(count(take_calls(), op::set_kernel_arg), 10U * names);
}

TEST_F(parameters, that_could_not_be_learnt_are_asked_for_again) {
  const memory numbers = make(counted(4));
  const std::int32_t number = 0;
  const arguments right{argument(numbers), argument(numbers)}, wrong{argument(number), argument(numbers)};
  const std::vector<std::function<void()>> hindrances{
      [] { fail_call(op::set_kernel_arg, 4, -5); }, [] { fail_call(op::set_kernel_arg, 10, -9999); },
      [] { fail_transport(op::set_kernel_arg, 1, -2); }, [] { fail_call(op::get_kernel_info, 2, -6); }};
  for (const auto& hinder : hindrances) {
    const auto from = compile_two();
    hinder();
    const auto unknown = make_taker(from, a_buffer_of_4), known = make_taker(from, a_buffer_of_4);
    EXPECT_TRUE(no_failure_left());
    EXPECT_EQ(launch(unknown, wrong, line(1)), outcome()) << "nothing is known";
    EXPECT_NE(launch(known, wrong, line(1)), outcome());
    EXPECT_EQ(launch(known, right, line(1)), outcome());
  }
  // A device may be open about a name's first kernel alone, as long as that lives.
  const auto from = compile_two();
  make_taker(from, "..........");
  EXPECT_NE(launch(make_taker(from, a_buffer_of_4), wrong, line(1)), outcome());
  // No device passes as many arguments as this count.
  constexpr std::uint32_t num_args = 0x1191;
  set_info(device_index(3, role::first), num_args, value_answer(~std::uint32_t{0}));
  forget_calls();
  make_taker(compile_one(), a_buffer_of_4);
  EXPECT_EQ(count(take_calls(), op::set_kernel_arg), 0U);
  set_info(device_index(3, role::first), num_args, {});
}

} // namespace scripted

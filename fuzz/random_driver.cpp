// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Stands in for the fuzzing engine: the same inputs in every run. Those of the folders behind the first argument as they
// are, and as many as that says at random, of which half are one of those with some bytes changed.
#include "fuzz/target.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <vector>

namespace {

using bytes = std::vector<char>;

void play(const bytes& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

bytes change(bytes input, std::mt19937& random) {
  for (auto left = random() % 4; !input.empty() && left > 0; --left)
    input[random() % input.size()] = static_cast<char>(random());
  input.resize(random() % 4 == 0 ? random() % (input.size() + 1) : input.size());
  return input;
}

} // namespace

int main(int count, char** words) {
  std::vector<bytes> seeds;
  for (int i = 2; i < count; ++i) {
    const std::filesystem::directory_iterator folder(words[i]);
    for (const std::filesystem::path& path : std::set<std::filesystem::path>(begin(folder), end(folder))) {
      std::ifstream file(path, std::ios::binary);
      play(seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
    }
  }
  std::mt19937 random(2022);
  for (int left = count > 1 ? std::atoi(words[1]) : 1000; left > 0; --left) {
    bytes input(random() % 1024);
    for (char& one : input)
      one = static_cast<char>(random());
    play(seeds.empty() || left % 2 == 0 ? input : change(seeds[random() % seeds.size()], random));
  }
}

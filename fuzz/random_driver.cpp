// Stands in for the fuzzing engine: the same inputs in every run, as many as the only argument says.
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the fuzzing engine has it by this name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int, char** argv) {
  std::mt19937 random(2022);
  for (int left = argv[1] ? std::atoi(argv[1]) : 1000; left > 0; --left) {
    std::vector<std::uint8_t> bytes(random() % 1024);
    for (std::uint8_t& one : bytes)
      one = static_cast<std::uint8_t>(random());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
}

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Conway's game of life on a torus, shown in the terminal.  life [generations]
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <tarva.hpp>
#include <thread>
#include <unistd.h>

namespace {

constexpr int width = 64, height = 32;

const char* const source = R"(
  kernel void next(global const uchar* now, global uchar* then) {
    const int x = get_global_id(0), y = get_global_id(1);
    const int width = get_global_size(0), height = get_global_size(1);
    int neighbours = 0;
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx)
        if (dx != 0 || dy != 0)
          neighbours += now[(y + dy + height) % height * width + (x + dx + width) % width];
    then[y * width + x] = neighbours == 3 || (neighbours == 2 && now[y * width + x]);
  }
)";

// Two rows of cells to a line of text.
void show(const std::vector<std::uint8_t>& cells, int generation) {
  static const char* const blocks[] = {" ", "\u2580", "\u2584", "\u2588"}; // none, upper, lower, both
  std::string screen = "\033[H";
  for (int y = 0; y < height; y += 2) {
    for (int x = 0; x < width; ++x)
      screen += blocks[cells[y * width + x] + 2 * cells[(y + 1) * width + x]];
    screen += '\n';
  }
  std::cout << screen << "generation " << generation << '\n' << std::flush;
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

} // namespace

int main(int argc, char** argv) try {
  // A glider: after each four generations it has moved on by one cell to the right and one down.
  const int generations = argc > 1 ? std::atoi(argv[1]) : 4 * width;
  std::vector<std::uint8_t> glider(width * height);
  for (const int cell : {1, width + 2, 2 * width, 2 * width + 1, 2 * width + 2})
    glider[cell] = 1;

  using cells = tarva::memory<std::uint8_t>;
  const auto next = tarva::best_device().build(source).kernel<cells, cells>("next");
  const bool to_terminal = isatty(STDOUT_FILENO) != 0;
  cells now(glider), then(now.size());
  if (to_terminal)
    std::cout << "\033[2J";
  for (int generation = 1; generation <= generations; ++generation) {
    next(tarva::range::items(width, height), now, then);
    std::swap(now, then);
    if (to_terminal)
      show(now.read(), generation);
  }

  const int moved = generations / 4;
  std::vector<std::uint8_t> expected(glider.size());
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      expected[(y + moved) % height * width + (x + moved) % width] = glider[y * width + x];
  const bool right = generations % 4 != 0 || now.read() == expected;
  std::cout << "The glider has moved by " << moved << " cells"
            << (right ? ".\n" : ", or so it should have.\n");
  return right ? 0 : 1;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}

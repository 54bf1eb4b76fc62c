// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the three programs do with a result.
#ifndef EXAMPLES_PORTS_RESULT_H
#define EXAMPLES_PORTS_RESULT_H

#include <fstream>
#include <iostream>
#include <vector>

// Writes the result to the file that the command line names, if it names one, and tells whether it is right. Returns the
// status of the program.
template <class T>
int finish(int argc, char** argv, const std::vector<T>& result, bool is_right) {
  if (argc > 1) {
    std::ofstream file(argv[1], std::ios::binary);
    file.write(reinterpret_cast<const char*>(result.data()),
               static_cast<std::streamsize>(result.size() * sizeof(T)));
    if (!file.flush()) {
      std::cerr << "Cannot write " << argv[1] << ".\n";
      return 1;
    }
  }
  std::cout << result.size() << " numbers, " << (is_right ? "as on the host.\n" : "which are WRONG.\n");
  return is_right ? 0 : 1;
}

#endif

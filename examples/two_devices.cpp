// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Two devices work on one memory object in turn. It belongs to neither: the library moves it to where it is needed
// next. With one device only, that one plays both parts.
#include <iostream>
#include <tarva.hpp>

int main() try {
  const tarva::device first = tarva::best_device();
  tarva::device second = first;
  for (const tarva::device& other : tarva::devices())
    if (other.properties()["OBJECT_ID"].value_text() != first.properties()["OBJECT_ID"].value_text())
      second = other;

  using numbers = tarva::memory<int>;
  const char* source = "kernel void scale(global int* data, int factor, int summand) {"
                       "  size_t i = get_global_id(0);"
                       "  data[i] = data[i] * factor + summand;"
                       "}";
  const auto on_first = first.build(source).kernel<numbers, int, int>("scale");
  const auto on_second = second.build(source).kernel<numbers, int, int>("scale");

  const numbers shared(8), kept(8);
  const auto all = tarva::range::items(shared.size());
  shared.fill(1);
  on_first(all, shared, 10, 1);  // 11, on the first device
  shared.copy_to(kept);          // a copy stays behind
  on_second(all, shared, 10, 2); // 112, moved to the second
  on_first(all, shared, 10, 3);  // 1123, and back again
  on_second(all, kept, 1, 100);  // 111

  std::cout << first.name() << " and " << second.name() << " made " << shared.read().front() << " and "
            << kept.read().front() << '\n';
  return shared.read() == std::vector<int>(8, 1123) && kept.read() == std::vector<int>(8, 111) ? 0 : 1;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}

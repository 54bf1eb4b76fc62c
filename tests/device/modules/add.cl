// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

kernel void add(global int* data, int amount) {
  data[get_global_id(0)] += amount;
}

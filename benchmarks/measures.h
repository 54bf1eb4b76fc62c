// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The groups of benchmarks; each function registers those of one file.
#pragma once

namespace benchmarks {

void add_launches();
void add_transfers();
void add_first_uses();
void add_movements();
void add_allocations();
void add_builds();
void add_handles();
void add_properties();
void add_starts();
void add_submissions();
void add_live_objects();
void add_busy_neighbours();
void add_many_threads();

} // namespace benchmarks

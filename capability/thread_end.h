// The time after a thread's thread-local objects were destroyed, when it still runs: in exit handlers and
// static destructors, after main or exit().
#pragma once

namespace qv {

// To be called before the first question below, while nothing is being unloaded: each thread that asks it has
// to find this library when it ends, so the library stays loaded.
void prepare_for_thread_ends() noexcept;

// Whether that time has come for the calling thread. It is noticed on threads that have asked before.
bool thread_locals_have_ended() noexcept;

} // namespace qv

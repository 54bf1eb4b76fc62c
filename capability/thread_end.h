// The time after a thread's thread-local objects were destroyed, when it still runs: in exit handlers and
// static destructors, after main or exit().
#pragma once

namespace qv {

// Whether that time has come for the calling thread. It is noticed on threads that have asked before.
bool thread_locals_have_ended() noexcept;

} // namespace qv

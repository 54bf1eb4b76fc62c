#include "capability/thread_end.h"

#include <dlfcn.h>

namespace qv {
namespace {

// Plain, so that it can be read when the objects are gone.
thread_local bool ended = false;

struct end_marker {
  bool alive = false;
  ~end_marker() { ended = true; }
};
thread_local end_marker marker;

} // namespace

void prepare_for_thread_ends() noexcept {
  Dl_info here;
  if (dladdr(reinterpret_cast<void*>(&prepare_for_thread_ends), &here) != 0)
    dlopen(here.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

bool thread_locals_have_ended() noexcept {
  if (!ended)
    marker.alive = true; // the first touch registers the destructor
  return ended;
}

} // namespace qv

// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Makes the peers that there are.
#include "benchmarks/peer.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace benchmarks {

std::vector<named_peer> make_peers(cl_context context, cl_device_id device) {
  std::vector<named_peer> peers;
#ifdef PEER_MODULE
  static void* const module = dlopen(PEER_MODULE, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(1);
  }
  for (const char* name : {"compute", "bindings"})
    if (void* maker = dlsym(module, (std::string("make_") + name).c_str()))
      peers.push_back({name, std::unique_ptr<peer>(reinterpret_cast<peer_maker>(maker)(context, device))});
#else
  static_cast<void>(context);
  static_cast<void>(device);
#endif
  return peers;
}

} // namespace benchmarks

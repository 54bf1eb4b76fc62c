#include "fuzz/conversation.h"

namespace fuzz {

void conversation::check_code(expected how, tarva_abi_result code) {
  ++calls_made;
  // A device's thread is ending the process; the engine then tells with which input.
  if (code == TARVA_ABI_UNKNOWN_FAILURE)
    std::this_thread::sleep_for(std::chrono::seconds(60));
  demand(how != expected::failure || code != TARVA_ABI_OK, "what cannot work fails");
  demand(how != expected::success || code == TARVA_ABI_OK, "what has to work works");
  demand(code == TARVA_ABI_OK || code == TARVA_ABI_OUT_OF_MEMORY || code == TARVA_ABI_LOGIC_FAILURE ||
             code == TARVA_ABI_RUNTIME_FAILURE,
         "every failure is known");
}

} // namespace fuzz

// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>

#include "modem/handlers/handlers.h"
#include "modem/handlers/outcome.h"
#include "modem/state/nam.h"

namespace modem {

void verify_subsidy_lock(Device& device, const Fields& request, Fields& response) {
  Bytes code = request.bytes("code");
  const std::string& wanted = device.state.security.subsidy_lock_code;
  if (!std::equal(code.begin(), code.end(), wanted.begin(), wanted.end())) {
    report_failure(response, kErrorAuthenticationFailed);
  }
}

// The code is kept as it comes: the modem asks for the old one, not for digits in the new one.
void write_spc(Device& device, const Fields& request, Fields& response) {
  const Bytes* current = device.state.nv.find(kSpcItem);
  if (current == nullptr || *current != request.bytes("current_spc")) {
    return report_failure(response, kErrorAuthenticationFailed);
  }
  device.state.nv.put(kSpcItem, request.bytes("new_spc"));
}

}  // namespace modem

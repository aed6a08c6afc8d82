// SPDX-License-Identifier: Apache-2.0
#include "src/features/status_reply.h"

#include "src/host/base/framing.h"
#include "src/host/base/parent.h"

uint8_t status_byte(int rc) {
  return static_cast<uint8_t>(rc == 0 ? kStatusSuccess : kStatusFailure);
}

void send_status_byte(const uint8_t* request, uint8_t status) {
  Frame reply = generic_reply(request, sizeof status);
  if (!reply) return;
  *reply.at(kGenericPayload) = status;
  writeToParent(reply);
}

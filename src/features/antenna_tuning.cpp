// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "src/features/features.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr unsigned int QMI_TUNER_REQ_V01 = 0x110;
constexpr uint32_t kMaxSetting = 24;
constexpr uint32_t kTunerDataSize = 28;

// The request and the response.
struct TunerMessage {
  uint32_t length;
  uint8_t data[kTunerDataSize];
};
static_assert(sizeof(TunerMessage) == 32);
static_assert(offsetof(TunerMessage, data) == 4);

// The byte after the setting ends it and is zero already. Unlike the coverage text, a setting never
// loses its last byte.
void put_setting(const uint8_t* setting, TunerMessage& message) {
  if (message.length == 0) return;
  memcpy(message.data, setting, message.length);
  uint8_t& end = message.data[message.length];
  if (end == 0) return;
  LOGE("no NULL found at the end of string");
  end = 0;
}

void send_reply(const uint8_t* request, const uint8_t* data, uint32_t size) {
  if (!send_generic_reply(request, data, size)) return;
  LOGE("qorext_hook_set_antenna_tuning sending response, msgLen 0x%x.", size);
}

}  // namespace

int qorext_hook_set_antenna_tuning(const uint8_t* request, uint32_t) {
  uint32_t length = generic_length(request);
  LOGE("receive request len  %d", length);
  TunerMessage message = {std::min(length, kMaxSetting), {}};
  TunerMessage response = {};
  put_setting(request + kGenericPayload, message);

  int rc = qorext_exchange(QMI_TUNER_REQ_V01, message, response);
  if (rc != 0) {
    LOGE("Sending QMI_TUNER_REQ_V01 failed! with error %d", rc);
    constexpr uint8_t kFailure = kStatusFailure;
    send_reply(request, &kFailure, sizeof kFailure);
    return rc;
  }
  LOGE("Dumping modem response for QMI_TUNER_REQ_V01...");
  hexDump(&response, sizeof response);
  send_reply(request, response.data, std::min(response.length, kTunerDataSize));
  return rc;
}

// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/carrier_indications.h"

#include <string.h>

#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr unsigned int kLteError = 0x10B;
constexpr unsigned int kCarrierEvent = 0x12;

constexpr uint32_t kLteErrorMessage = 0x020001B1;
constexpr uint32_t kCarrierEventMessage = 0x020001B0;

// As the parent gets it: packed and little-endian.
struct __attribute__((packed)) LteErrorData {
  uint32_t first_value;
  uint8_t second_value;
  uint32_t third_value;
  uint8_t text[103];
};
static_assert(sizeof(LteErrorData) == 112);
static_assert(offsetof(LteErrorData, text) == 9);

void send(uint32_t id, const void* data, uint32_t size) {
  if (!send_unsolicited_cdma(id, data, size)) LOGE("send_unsol_response: out of memory!");
}

// Decodes into the zeroed record; logs a failure.
template <typename Record>
bool decode(qmi_client_type client, unsigned int id, void* buffer, unsigned int length,
            Record& record) {
  int rc = decode_indication(client, id, buffer, length, record);
  if (rc == QMI_NO_ERR) return true;
  LOGE("qor_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(%d).", rc);
  return false;
}

}  // namespace

void convert_lte_error_to_ril_format(const LteErrorIndication* indication) {
  LteErrorData data = {};
  if (indication == nullptr) {
    LOGE("convert_lte_error_to_ril_format: parameter is null!");
  } else {
    data.first_value = indication->first_value;
    data.second_value = indication->second_value;
    data.third_value = indication->third_value;
    memcpy(data.text, indication->text, sizeof data.text);
  }
  send(kLteErrorMessage, &data, sizeof data);
}

void send_unsol_response(uint32_t value) { send(kCarrierEventMessage, &value, sizeof value); }

// An indication that cannot be decoded still counts as a carrier one: it must not reach the table.
int qor_qmi_sprint_hook_ind_cb(qmi_client_type client, unsigned int indication_id, void* buffer,
                               unsigned int length, void*) {
  if (indication_id == kLteError) {
    LteErrorIndication indication = {};
    if (decode(client, indication_id, buffer, length, indication)) {
      convert_lte_error_to_ril_format(&indication);
    }
    return 0;
  }
  if (indication_id == kCarrierEvent) {
    uint16_t value = 0;  // forwarded as 32 bits
    if (decode(client, indication_id, buffer, length, value)) send_unsol_response(value);
    return 0;
  }
  LOGD("qor_qmi_sprint_hook_ind_cb: Unknown Indication from Modem.");
  return -1;
}

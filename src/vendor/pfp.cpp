// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/handlers.h"

#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr unsigned int kPfpMessage = 0x0A;
constexpr uint32_t kPfpUnsolicited = 0x0200001D;

struct PfpRequest {
  uint32_t value;
};
static_assert(sizeof(PfpRequest) == 4);

struct PfpResponse {
  uint32_t result;
  uint32_t error;
  uint32_t unused;
};
static_assert(sizeof(PfpResponse) == 12);

// Forwarded as decoded: only the log reads its fields.
struct mypfp_ind_msg_v01 {
  uint16_t first_value;
  uint16_t rat;
  uint32_t tbl_idx;
  uint8_t remaining_bytes[224];
};
static_assert(sizeof(mypfp_ind_msg_v01) == 232);
static_assert(offsetof(mypfp_ind_msg_v01, rat) == 2);
static_assert(offsetof(mypfp_ind_msg_v01, tbl_idx) == 4);

}  // namespace

int myPfpRequest(const uint8_t* request, uint32_t) {
  PfpRequest message = {};
  PfpResponse response = {};
  LOGE("MyPfp: Sending request ");
  int rc = qorext_exchange(kPfpMessage, message, response);
  LOGE("MyPfp: returned rc=%d result =%d", rc, response.result);
  uint32_t id = request == nullptr ? 0 : cdma_id(request);
  // The modem's result is logged only; a refusal still gets status 0.
  send_cdma_status(id, status_of(rc == 0));
  return 0;
}

int pfpIndication(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void*) {
  mypfp_ind_msg_v01 table = {};
  if (decode_indication(client, indication_id, buffer, length, table) != QMI_NO_ERR) {
    LOGE("failed to decode pfp idl data");
    return 0;
  }
  if (!send_unsolicited_cdma(kPfpUnsolicited, &table, sizeof table)) return 0;
  LOGE("mypfp_ind_msg_v01: rat = %d , tbl_idx = %d data_size = %d ", table.rat, table.tbl_idx,
       static_cast<int>(sizeof table));
  return 0;
}

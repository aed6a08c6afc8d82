// SPDX-License-Identifier: Apache-2.0
#include "src/features/feature_requests.h"
#include "src/host/base/hex.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr unsigned int QMI_DATA_PLMN_REQ_V01 = 0x16;

struct DataPlmnRequest {
  uint32_t not_used;
};
static_assert(sizeof(DataPlmnRequest) == 4);

struct DataPlmnResponse {
  uint8_t record[568];
};
static_assert(sizeof(DataPlmnResponse) == 568);

}  // namespace

int handleDataPlmn(const uint8_t*, uint32_t) {
  DataPlmnRequest request = {};
  DataPlmnResponse response = {};
  int rc = qorext_exchange(QMI_DATA_PLMN_REQ_V01, request, response);
  if (rc == 0) {
    LOGE("Dumping modem response for QMI_DATA_PLMN_REQ_V01...");
    hexDump(response.record, sizeof response.record);
  } else {
    LOGE("Sending QMI_DATA_PLMN_REQ_V01 failed!");
    response = {};  // by its zeros the parent tells the failure
  }
  writeToParent(response.record, sizeof response.record);
  return rc;
}

// SPDX-License-Identifier: Apache-2.0
// The utility indication, whose content depends on its type, and the coverage report.
#include <cutils/properties.h>

#include <algorithm>

#include "src/capture/capture.h"
#include "src/features/features.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uint32_t kKpiPacket = 1;
constexpr uint32_t kRfCableStatus = 7;
constexpr uint8_t kLogUploadNotice = 0x02;

constexpr uint32_t kCoverageReportSize = 32;
constexpr uint32_t kCoverageMessage = 0x04000301;

enum Content { kWholeData, kNoticeAndData, kFirstByte };

// An indication type that becomes an unsolicited message. `message` is its type and id: the
// bytes on the pipe, read as a little-endian number.
struct ForwardedType {
  uint32_t type;
  uint32_t message;
  Content content;
};

constexpr ForwardedType kForwardedTypes[] = {
    {0, 0x03000B00, kNoticeAndData},
    {2, 0x04000C00, kWholeData    },
    {3, 0x04000E00, kWholeData    },
    {5, 0x04001200, kWholeData    },
    {6, 0x04001300, kWholeData    },
    {9, 0x04001500, kFirstByte    },
};

const ForwardedType* find_forwarded(uint32_t type) {
  for (const ForwardedType& row : kForwardedTypes) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

void forward(const ForwardedType& row, const utils_ind_msg_v01& indication) {
  // The notice precedes the data, or is left out by sending from the byte after it.
  uint8_t data[1 + kUtilityDataSize] = {kLogUploadNotice};
  uint32_t size = row.content == kFirstByte ? 1 : std::min(indication.length, kUtilityDataSize);
  memcpy(data + 1, indication.data, size);

  uint32_t notice = row.content == kNoticeAndData ? 1 : 0;
  if (!send_unsolicited_generic(row.message, data + 1 - notice, notice + size)) return;
  LOGE("utils_ind_msg_v01: respsize=%d, msgLen=%d",
       static_cast<int>(kUnsolOverhead + notice + size), size);
}

void update_rf_status(const utils_ind_msg_v01& indication) {
  const char* status = "";
  if (indication.length == 1) {
    status = indication.data[0] != 0 ? "1" : "0";
    property_set("ril.baseband.rfcable.status", status);
  } else {
    LOGE("RF status info received is invalid");  // the property is not changed
  }
  LOGE("updateRfStatus: ril.baseband.rfcable.status: %s", status);
}

void handle(const utils_ind_msg_v01& indication) {
  if (const ForwardedType* row = find_forwarded(indication.type)) {
    forward(*row, indication);
  } else if (indication.type == kKpiPacket) {
    vornIndHndlr(indication.data);
  } else if (indication.type == kRfCableStatus) {
    update_rf_status(indication);
  } else {
    LOGE("utilsIndHndlr: unknown indication type [%d]", indication.type);
  }
}

}  // namespace

int utilsIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void*) {
  utils_ind_msg_v01 indication = {};
  if (decode_indication(client, indication_id, buffer, length, indication) != QMI_NO_ERR) {
    LOGE("uploadbplogs:failed to decode idl data");
    return 0;
  }
  handle(indication);
  return 0;
}

int sigcovIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                   unsigned int length, void*) {
  uint8_t report[kCoverageReportSize] = {};
  if (decode_indication(client, indication_id, buffer, length, report) != QMI_NO_ERR) {
    LOGE("sigcovIndHndlr: failed to decode ind data");
    return 0;
  }
  send_unsolicited_generic(kCoverageMessage, report, sizeof report);
  return 0;
}

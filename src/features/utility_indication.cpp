// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>

#include <algorithm>

#include "src/capture/kpi_intake.h"
#include "src/features/feature_indications.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/utility_messages.h"

namespace {

constexpr uint32_t kKpiPacket = 1;
constexpr uint32_t kRfCableStatus = 7;
constexpr uint8_t kLogUploadNotice = 0x02;

enum Content { kWholeData, kNoticeAndData, kFirstByte };

// Indication types that become an unsolicited message; its type and id as they lie on the pipe,
// read as a little-endian word.
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
  uint32_t notice = row.content == kNoticeAndData ? 1 : 0;
  uint32_t size = row.content == kFirstByte ? 1 : std::min(indication.length, kUtilityDataSize);

  Frame frame = unsolicited_generic(row.message, notice + size);
  if (!frame) return;
  if (notice != 0) *frame.at(kUnsolGenericData) = kLogUploadNotice;
  memcpy(frame.at(kUnsolGenericData + notice), indication.data, size);
  writeUnsolToParent(frame);
  LOGE("utils_ind_msg_v01: respsize=%d, msgLen=%d", static_cast<int>(frame.size()), size);
}

void update_rf_status(const utils_ind_msg_v01& indication) {
  const char* status = "";
  if (indication.length == 1) {
    status = indication.data[0] != 0 ? "1" : "0";
    property_set("ril.baseband.rfcable.status", status);
  } else {
    LOGE("RF status info received is invalid");
  }
  LOGE("updateRfStatus: ril.baseband.rfcable.status: %s", status);
}

void act_on(const utils_ind_msg_v01& indication) {
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
  if (qmi_client_message_decode(client, QMI_IDL_INDICATION, indication_id, buffer, length,
                                &indication, sizeof indication) != QMI_NO_ERR) {
    LOGE("uploadbplogs:failed to decode idl data");
    return 0;
  }
  act_on(indication);
  return 0;
}

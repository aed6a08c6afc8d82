// SPDX-License-Identifier: Apache-2.0
#include "src/host/indications.h"

#include <stdio.h>

#include "src/capture/hob_save.h"
#include "src/carrier_modem/carrier_indications.h"
#include "src/features/feature_indications.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/pfp.h"

namespace {

constexpr uint32_t kNotificationMessage = 1111;
constexpr uint32_t kNotificationSize = 22;
constexpr size_t kNotificationText = 20;  // at most; the rest of the data stays zero

constexpr uint32_t kGenericMessage = 0x06000200;

uint32_t g_notification_counter = 12;

int send_notification(qmi_client_type, unsigned int, void*, unsigned int, void*) {
  char text[kNotificationText + 1];
  snprintf(text, sizeof text, "%s-%d", "UNSOLNOTIFY9876", g_notification_counter++);

  Frame frame = unsolicited_cdma(kNotificationMessage, kNotificationSize);
  if (!frame) return 0;
  memcpy(frame.at(kUnsolCdmaData), text, strlen(text));
  writeUnsolToParent(frame);
  return 0;
}

int send_generic_message(qmi_client_type, unsigned int, void*, unsigned int, void*) {
  Frame frame = unsolicited_generic(kGenericMessage, 0);
  if (frame) writeUnsolToParent(frame);
  return 0;
}

using IndicationHandler = int (*)(qmi_client_type client, unsigned int indication_id, void* buffer,
                                  unsigned int length, void* callback_data);

struct IndDispatchEntry {
  uint32_t indication_id;
  IndicationHandler handler;
};

constexpr IndDispatchEntry kIndicationTable[] = {
    {0x1,   send_notification   },
    {0xA,   pfpIndication       },
    {0x13,  hobSaveIndHndlr     },
    {0x16,  send_generic_message},
    {0xF,   utilsIndHndlr       },
    {0x10C, sigcovIndHndlr      },
};

}  // namespace

void handleUnsolMsg(qmi_client_type client, unsigned int indication_id, void* buffer,
                    unsigned int length, void* callback_data) {
  LOGE("Handling unsol msg %d", indication_id);
  if (qor_qmi_sprint_hook_ind_cb(client, indication_id, buffer, length, callback_data) == 0) {
    LOGE("Unsol resp 0x%x is handled by Sprint handler.", indication_id);
    return;
  }
  LOGE("Unsol resp 0x%x not supported by Sprint handler.", indication_id);

  for (const IndDispatchEntry& entry : kIndicationTable) {
    if (entry.indication_id != indication_id) continue;
    entry.handler(client, indication_id, buffer, length, callback_data);
    return;
  }
  LOGE("Unsupported Indicator message %u", indication_id);
}

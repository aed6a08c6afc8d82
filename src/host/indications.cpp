// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>

#include "src/capture/capture.h"
#include "src/carrier_modem/carrier_indications.h"
#include "src/features/features.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/host.h"
#include "src/vendor/handlers.h"

namespace {

constexpr uint32_t kNotificationMessage = 1111;
constexpr uint32_t kNotificationSize = 22;
constexpr size_t kMaxNotificationText = 20;  // the rest of the data stays zero

constexpr uint32_t kGenericMessage = 0x06000200;

uint32_t g_notification_counter = 12;  // used on the callback thread only

int send_notification(qmi_client_type, unsigned int, void*, unsigned int, void*) {
  char text[kNotificationSize] = {};
  snprintf(text, kMaxNotificationText + 1, "UNSOLNOTIFY9876-%d", g_notification_counter++);
  send_unsolicited_cdma(kNotificationMessage, text, sizeof text);
  return 0;
}

// A message without data; its content is the id alone.
int send_generic_message(qmi_client_type, unsigned int, void*, unsigned int, void*) {
  send_unsolicited_generic(kGenericMessage, nullptr, 0);
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

  // Results of the handlers are ignored.
  for (const IndDispatchEntry& entry : kIndicationTable) {
    if (entry.indication_id != indication_id) continue;
    entry.handler(client, indication_id, buffer, length, callback_data);
    return;
  }
  LOGE("Unsupported Indicator message %u", indication_id);
}

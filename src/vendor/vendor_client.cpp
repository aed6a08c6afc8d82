// SPDX-License-Identifier: Apache-2.0
// The client is brought up in three steps: a notifier reports the service, a look-up lists its
// instances, and the first of them is opened. The notifier is needed for the waits only.
#include "src/vendor/vendor_client.h"

#include <cutils/properties.h>
#include <string.h>

#include "qmi_client.h"
#include "qorext_vendor_service_v01.h"
#include "src/host/base/log.h"
#include "src/vendor/service_lookup.h"

namespace {

constexpr int kIdlMajor = 1;
constexpr int kIdlMinor = 1;
constexpr int kIdlTool = 4;

constexpr int kMaxAttempts = 500;

// Set by the bring-up on the main thread; afterwards sends on any thread only read it.
qmi_client_type g_client = nullptr;
qmi_client_os_params g_signal;
// Set before the client is opened, since indications may arrive during the opening.
qmi_client_ind_cb g_on_indication = nullptr;

void qmi_qorext_hook_ind_cb(qmi_client_type client, unsigned int message_id, void* buffer,
                            unsigned int length, void* callback_data) {
  LOGE("qmi_qorext_hook_ind_cb: msg_id=0x%x buf_len=%d cb_data=%p\n", message_id, length,
       callback_data);
  g_on_indication(client, message_id, buffer, length, callback_data);
}

bool has_separate_modem() {
  char baseband[PROPERTY_VALUE_MAX];
  property_get("ro.baseband", baseband, "");
  return strcasestr(baseband, "mdm") != nullptr;
}

// Stores the number of instances once there are enough of them. Each failed attempt waits for the
// signal, at most one second. False after the last attempt.
bool wait_for_service(qmi_idl_service_object_type service, unsigned int needed,
                      unsigned int* services) {
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    int rc = qmi_client_get_service_list(service, nullptr, nullptr, services);
    LOGE(
        "qmi_qorext_hook_client_init: qmi_client_get_service_list() returned %d num_services = "
        "%d\n",
        rc, *services);
    if (rc == QMI_NO_ERR && *services >= needed) return true;
    LOGE("qmi_qorext_hook_client_init: wait for server to come up.\n");
    wait_for_service_signal(&g_signal);
  }
  LOGE("qmi_qorext_hook_client_init: Giving up- Retries exceede %d \n", kMaxAttempts);
  return false;
}

int open_first_instance(qmi_idl_service_object_type service, unsigned int seen) {
  ServiceInstances found;
  int rc = list_service_instances(service, seen, &found);
  if (rc == QMI_NO_ERR) {
    LOGE(
        "qmi_qorext_hook_client_init: qmi_client_get_service_list() returned %d num_entries = %d "
        "num_services = %d\n",
        rc, found.entries, found.services);
    rc = qmi_client_init(&found.list[0], service, qmi_qorext_hook_ind_cb, nullptr, nullptr,
                         &g_client);
  }
  // One text for a failed look-up and a failed opening: log filters know it.
  if (rc != QMI_NO_ERR) {
    LOGE("qmi_qorext_hook_client_init: qmi_client_init failed. rc = %d\n", rc);
  }
  return rc;
}

bool open_client(qmi_idl_service_object_type service, unsigned int needed) {
  unsigned int services = 0;
  return wait_for_service(service, needed, &services) &&
         open_first_instance(service, services) == QMI_NO_ERR;
}

}  // namespace

int qmi_qorext_hook_client_init(qmi_client_ind_cb on_indication) {
  g_on_indication = on_indication;
  // With a separate modem chip the service must be up on both processors; else a look-up that
  // succeeds is enough.
  unsigned int needed = has_separate_modem() ? 2 : 0;

  auto service = qorext_vs_get_service_object_internal_v01(kIdlMajor, kIdlMinor, kIdlTool);
  LOGE("qmi_qorext_hook_client_init: qorext_hook_get_serivce_object\n");
  if (service == nullptr) {
    LOGE("qmi_qorext_hook_client_init: qorext_hook_get_serivce_object failed.\n");
    return -1;
  }

  qmi_client_type notifier = nullptr;
  int rc = qmi_client_notifier_init(service, &g_signal, &notifier);
  LOGE("qmi_qorext_hook_client_init: qmi_client_notifier_init \n");
  if (rc != QMI_NO_ERR) {
    LOGE("qmi_qorext_hook_client_init: qmi_client_notifier_init failed. rc = %d\n", rc);
    return -1;
  }

  bool opened = open_client(service, needed);
  qmi_client_release(notifier);
  if (!opened) return -1;
  LOGE("qmi_qorext_hook_client_init Succeeded\n");
  return 0;
}

int qorext_send_msg_sync(unsigned int message_id, void* request, unsigned int request_length,
                         void* response, unsigned int response_length) {
  return qmi_client_send_msg_sync(g_client, message_id, request, request_length, response,
                                  response_length, kModemTimeoutMs);
}

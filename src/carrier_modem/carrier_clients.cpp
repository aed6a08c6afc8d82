// SPDX-License-Identifier: Apache-2.0
// Each attempt to open a client has its own notifier and signal. There is no pause between attempts
// beyond the waits of the polls.
#include "src/carrier_modem/carrier_clients.h"

#include "device_management_service_v01.h"
#include "network_access_service_v01.h"
#include "src/host/base/log.h"
#include "src/vendor/service_lookup.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr int kIdlMajor = 1;
constexpr int kNasIdlMinor = 175;
constexpr int kDmsIdlMinor = 56;
constexpr int kIdlTool = 6;

constexpr int kMaxAttempts = 5;
constexpr int kMaxPolls = 5;

// Set on the main thread before the request loop, which alone sends on them.
qmi_client_type g_nas_client = nullptr;
qmi_client_type g_dms_client = nullptr;

// Returns the number of instances of the last poll, also when every poll has failed.
unsigned int poll_for_service(qmi_idl_service_object_type service, qmi_client_os_params* signal) {
  unsigned int services = 0;
  for (int poll = 0; poll < kMaxPolls; ++poll) {
    int rc = qmi_client_get_service_list(service, nullptr, nullptr, &services);
    LOGE("sprint_client_init: qmi_client_get_service_list() returned %d num_services = %d\n", rc,
         services);
    if (rc == QMI_NO_ERR) break;
    LOGE("sprint_client_init: wait for server to come up.\n");
    wait_for_service_signal(signal);
  }
  return services;
}

qmi_client_type* choose_handle(int service_type) {
  switch (service_type) {
    case kDmsService:
      LOGE("sprint_client_init: DMS");
      return &g_dms_client;
    case kNasService:
      LOGE("sprint_client_init: NAS");
      return &g_nas_client;
    default:
      LOGE("sprint_client_init: Unknown");
      return nullptr;
  }
}

// The instances are listed also after failed polls; a failure of the list ends the attempt.
int open_first_instance(qmi_idl_service_object_type service, int service_type, unsigned int seen) {
  ServiceInstances found;
  int rc = list_service_instances(service, seen, &found);
  LOGE(
      "sprint_client_init: qmi_client_get_service_list() returned %d num_entries = %d "
      "num_services = %d\n",
      rc, found.entries, found.services);
  if (rc != QMI_NO_ERR) return rc;

  qmi_client_type* handle = choose_handle(service_type);
  rc = -1;  // for an unknown service type
  if (handle != nullptr) {
    rc = qmi_client_init(&found.list[0], service, nullptr, nullptr, nullptr, handle);
  }
  if (rc == QMI_NO_ERR) {
    LOGE("sprint_client_init Succeeded\n");
  } else {
    LOGE("sprint_client_init: qmi_client_init failed. rc = %d\n", rc);
  }
  return rc;
}

int try_to_open(qmi_idl_service_object_type service, int service_type) {
  if (service == nullptr) {
    LOGE("sprint_client_init: qorext_hook_get_serivce_object failed.\n");
    return -1;
  }

  qmi_client_os_params signal = {};
  qmi_client_type notifier = nullptr;
  int rc = qmi_client_notifier_init(service, &signal, &notifier);
  LOGE("sprint_client_init: qmi_client_notifier_init \n");
  if (rc != QMI_NO_ERR) {
    LOGE("sprint_client_init: qmi_client_notifier_init failed. rc = %d\n", rc);
    return rc;
  }

  unsigned int services = poll_for_service(service, &signal);
  rc = open_first_instance(service, service_type, services);
  if (notifier != nullptr) qmi_client_release(notifier);
  return rc;
}

int send_on(qmi_client_type client, const char* name, unsigned int message_id, void* request,
            unsigned int request_length, void* response, unsigned int response_length) {
  if (client == nullptr) {
    LOGE("%s: Handler not initialized!", name);
    return -1;
  }
  return qmi_client_send_msg_sync(client, message_id, request, request_length, response,
                                  response_length, kModemTimeoutMs);
}

}  // namespace

int qmi_qorext_sprint_client_init_with_type(qmi_idl_service_object_type service, int service_type) {
  int rc = 0;
  for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
    rc = try_to_open(service, service_type);
    if (rc == QMI_NO_ERR) return rc;
    LOGE("qmi_qorext_sprint_client_init_with_type: Try (%d): Client init fail. rc = %d\n", attempt,
         rc);
  }
  return rc;
}

int qmi_qorext_sprint_client_init() {
  auto nas = nas_get_service_object_internal_v01(kIdlMajor, kNasIdlMinor, kIdlTool);
  auto dms = dms_get_service_object_internal_v01(kIdlMajor, kDmsIdlMinor, kIdlTool);

  int rc = qmi_qorext_sprint_client_init_with_type(nas, kNasService);
  LOGE("qmi_qorext_sprint_client_init: NAS Client Init rc: %d", rc);
  if (rc != QMI_NO_ERR) return rc;

  rc = qmi_qorext_sprint_client_init_with_type(dms, kDmsService);
  LOGE("qmi_qorext_sprint_client_init: DMS Client Init rc: %d", rc);
  return rc;
}

int qmi_qorext_sprint_nas_send_msg_sync(unsigned int message_id, void* request,
                                        unsigned int request_length, void* response,
                                        unsigned int response_length) {
  return send_on(g_nas_client, "qmi_qorext_sprint_nas_send_msg_sync", message_id, request,
                 request_length, response, response_length);
}

int qmi_qorext_sprint_dms_send_msg_sync(unsigned int message_id, void* request,
                                        unsigned int request_length, void* response,
                                        unsigned int response_length) {
  return send_on(g_dms_client, "qmi_qorext_sprint_dms_send_msg_sync", message_id, request,
                 request_length, response, response_length);
}

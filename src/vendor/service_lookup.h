// SPDX-License-Identifier: Apache-2.0
// Finding the instances of a QMI service, and waiting for one to come up.
#pragma once

#include "qmi_client.h"

// Waits until the notifier's signal is set, at most one second; then sets `timed_out`, which is
// cleared first. The signal is never cleared: once a service has come up, later waits end at once
// and their callers poll.
void wait_for_service_signal(qmi_client_os_params* signal);

// Room for the instances that one look-up can return; the first is the one used.
constexpr unsigned int kMaxServiceInstances = 16;

struct ServiceInstances {
  qmi_service_info list[kMaxServiceInstances];
  unsigned int entries;   // room asked for, then records filled
  unsigned int services;  // instances reported
};

// Looks the service up, asking for as many records as instances were seen before. The client
// library's code.
int list_service_instances(qmi_idl_service_object_type service, unsigned int seen,
                           ServiceInstances* instances);

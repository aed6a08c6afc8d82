// Waiting for a QMI service to come up, on the signal that its notifier raises.
#pragma once

#include "qmi_client.h"

// Waits until the signal is set, at most one second. The signal is never cleared: once a service
// has come up, later waits end at once and their callers poll.
void wait_for_service_signal(qmi_client_os_params* signal);

// Room for the instances of a service that one look-up can return; the first is the one used.
constexpr unsigned int kMaxServiceInstances = 16;

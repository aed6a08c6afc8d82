// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <thread>

#include "platform/linux/qmi_cci/handle.h"
#include "platform/linux/qmi_cci/threads.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_transport/transport.h"
#include "qmi_client.h"

namespace qmi_cci {

// Raises the caller's signal for every instance of a service that comes up during or after start().
// Instances that were up before are in the service list. An instance that comes up after start()
// has returned is listed, signalled, or both: the name service has answered the notifier's lookup
// before a list is requested.
//
// When the name service is not there or does not answer in time, all instances that it announces
// later count as new.
class Notifier final : public Handle {
 public:
  // Initialises all members of `signal`, which must outlive the notifier.
  Notifier(qmi_transport::Endpoint endpoint, const qmi_idl::Service& service,
           qmi_client_os_params& signal);

  // Waits for the name service as read_list() does.
  void start() override;
  void close() override;

 private:
  void begin_watch();
  // The thread's main function: returns after close().
  void run();
  // Returns when the name service has gone away or the notifier is closed.
  void follow(qmi_transport::ServiceWatch& watch);
  void raise();

  qmi_transport::Endpoint endpoint_;
  const qmi_idl::Service& service_;
  qmi_client_os_params& signal_;  // sig_set is protected by the signal's own mutex
  StopEvent stop_;
  // Not locked: used by start() before the thread exists, and then by the thread alone.
  std::unique_ptr<qmi_transport::ServiceWatch> watch_;
  std::thread watcher_;
};

}  // namespace qmi_cci

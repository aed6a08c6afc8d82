// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <thread>

#include "platform/linux/qmi_cci/handle.h"
#include "platform/linux/qmi_cci/stop_event.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_transport/transport.h"
#include "qmi_client.h"

namespace qmi_cci {

// Raises the caller's signal for every instance of a service that comes up after start() has
// returned, or while it runs. Those that were up before are for the service list. An instance that
// comes up after the start is either listed or signalled, or both: the name service has answered
// the notifier's look-up before any list is asked for.
//
// Of a name service that is not there, or does not answer in time, nothing is known: all that it
// announces later has come up.
class Notifier final : public Handle {
 public:
  // Initialises all members of `signal`, which the caller keeps until the notifier is released.
  Notifier(qmi_transport::Endpoint endpoint, const qmi_idl::Service& service,
           qmi_client_os_params& signal);

  // Waits for the name service as read_list() does.
  void start() override;
  void close() override;

 private:
  void begin_watch();
  void watch_for_ever();
  // Returns when the name service has gone away or the notifier is closed.
  void follow(qmi_transport::ServiceWatch& watch);
  void raise();

  qmi_transport::Endpoint endpoint_;
  const qmi_idl::Service& service_;
  qmi_client_os_params& signal_;
  StopEvent stop_;
  std::unique_ptr<qmi_transport::ServiceWatch> watch_;  // the thread's, once that runs
  std::thread watcher_;
};

}  // namespace qmi_cci

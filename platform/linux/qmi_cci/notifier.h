#pragma once

#include <thread>

#include "handle.h"
#include "qmi_client.h"
#include "qmi_idl/descriptor.h"
#include "qmi_transport/transport.h"
#include "stop_event.h"

namespace qmi_cci {

// Raises the caller's signal for every instance of a service that comes up.
class Notifier final : public Handle {
 public:
  // Initialises all members of `signal`, which the caller keeps until the notifier is released.
  Notifier(qmi_transport::Endpoint endpoint, const qmi_idl::Service& service,
           qmi_client_os_params& signal);

  void start() override;
  void close() override;

 private:
  void watch_for_ever();
  // Returns when the name service has gone away or the notifier is closed.
  void follow(qmi_transport::ServiceWatch& watch);
  void raise();

  qmi_transport::Endpoint endpoint_;
  const qmi_idl::Service& service_;
  qmi_client_os_params& signal_;
  StopEvent stop_;
  std::thread watcher_;
};

}  // namespace qmi_cci

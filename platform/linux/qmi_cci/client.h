// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <thread>

#include "platform/linux/qmi_cci/connection.h"
#include "platform/linux/qmi_cci/handle.h"
#include "platform/linux/qmi_cci/indication_queue.h"
#include "qmi_client.h"

namespace qmi_cci {

struct Callback {
  qmi_client_ind_cb function = nullptr;  // null: indications are dropped and there are no threads
  void* data = nullptr;
};

// A client of one instance of a service. With a callback it has two threads: one reads packets
// while no sender waits for a response, the other calls back. Any number of threads may send.
class Client final : public Handle, public std::enable_shared_from_this<Client> {
 public:
  Client(std::unique_ptr<qmi_transport::Channel> channel, const qmi_idl::Service& service,
         Callback callback);

  void start() override;
  void close() override;
  void on_exit() override { indications_.report_burst(); }

  const qmi_idl::Service& service() const { return service_; }

  // As qmi_client_send_msg_sync(). An empty span is a message without a structure.
  int send(uint32_t message_id, std::span<const uint8_t> request, std::span<uint8_t> response,
           std::chrono::milliseconds timeout);

 private:
  Connection::OnIndication indication_handler();

  const qmi_idl::Service& service_;
  Callback callback_;
  IndicationQueue indications_;  // before connection_, whose handler uses it
  Connection connection_;
  std::thread reader_;           // joined by close()
  std::thread callback_thread_;  // joined by close(), or detached when it runs close() itself
};

}  // namespace qmi_cci

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <thread>

#include "platform/linux/qmi_cci/connection.h"
#include "platform/linux/qmi_cci/handle.h"
#include "platform/linux/qmi_cci/indication_queue.h"
#include "qmi_client.h"

namespace qmi_cci {

struct Callback {
  qmi_client_ind_cb function = nullptr;  // null: indications are dropped, no thread is needed
  void* data = nullptr;
};

// A client of one instance of a service.
class Client final : public Handle, public std::enable_shared_from_this<Client> {
 public:
  Client(std::unique_ptr<qmi_transport::Channel> channel, const qmi_idl::Service& service,
         Callback callback);

  void start() override;
  void close() override;
  void exiting() override { indications_.report_burst(); }

  const qmi_idl::Service& service() const { return service_; }

  // As qmi_client_send_msg_sync; an empty span stands for no structure.
  int send(uint32_t message_id, std::span<const uint8_t> request, std::span<uint8_t> response,
           std::chrono::milliseconds timeout);

 private:
  Connection::OnIndication indication_sink();

  const qmi_idl::Service& service_;
  Callback callback_;
  IndicationQueue indications_;
  Connection connection_;
  std::thread reader_;
  std::thread caller_;
};

}  // namespace qmi_cci

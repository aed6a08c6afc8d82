// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/client_support.h"

namespace client_test {

using qmi_idl::WireType;

Bytes packet_of(WireType type, uint16_t transaction, uint32_t message_id, const Bytes& tlvs) {
  Bytes packet(qmi_idl::kHeaderSize);
  qmi_idl::store_header(
      {type, transaction, static_cast<uint16_t>(message_id), static_cast<uint16_t>(tlvs.size())},
      std::span(packet).first<qmi_idl::kHeaderSize>());
  packet.insert(packet.end(), tlvs.begin(), tlvs.end());
  return packet;
}

Bytes band_answer(const Request& request) {
  Bytes tlvs = {0x01, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  codec_test::put(tlvs, 7, number_of(request), 4);
  return packet_of(WireType::response, transaction_of(request), kReadBand, tlvs);
}

Bytes utils_indication(uint32_t number) {
  Bytes tlvs = {0x01, 4, 0, 0, 0, 0, 0, 0x02, 3, 0, 1, 0, 0xAB};
  codec_test::put(tlvs, 3, number, 4);
  return packet_of(WireType::indication, 0, kUtils, tlvs);
}

void answer(qmi_transport::Server& server, const Request& request) {
  server.send(request.peer, band_answer(request));
}

void stay_silent(qmi_transport::Server&, const Request&) {}

int read_band(qmi_client_type client, uint32_t number, Band& band, unsigned timeout_ms) {
  band = {};
  return qmi_client_send_msg_sync(client, kReadBand, &number, sizeof(number), &band, sizeof(band),
                                  timeout_ms);
}

qmi_service_info first_instance() {
  qmi_service_info info{};
  unsigned entries = 1;
  unsigned services = 0;
  EXPECT_EQ(qmi_client_get_service_list(vendor(), &info, &entries, &services), QMI_NO_ERR);
  return info;
}

qmi_client_type open_client(qmi_client_ind_cb callback, void* data) {
  qmi_service_info info = first_instance();
  qmi_client_type client = nullptr;
  EXPECT_EQ(qmi_client_init(&info, vendor(), callback, data, nullptr, &client), QMI_NO_ERR);
  return client;
}

void Seen::callback(qmi_client_type client, unsigned int message_id, void* buffer,
                    unsigned int length, void* seen) {
  uint8_t structure[520];
  EXPECT_EQ(qmi_client_message_decode(client, QMI_IDL_INDICATION, message_id, buffer, length,
                                      structure, sizeof(structure)),
            QMI_NO_ERR);
  uint32_t number = 0;
  memcpy(&number, structure, sizeof(number));
  auto& self = *static_cast<Seen*>(seen);
  std::lock_guard lock(self.mutex);
  self.numbers.push_back(number);
}

size_t Seen::count() {
  std::lock_guard lock(mutex);
  return numbers.size();
}

Client::Client() : place_(GetParam().transport), modem_(place_.endpoint(), answer) {
  modem_.publish(qorext().id, vendor_instance());
}

Client::~Client() {
  if (client_ != nullptr) qmi_client_release(client_);
}

void Client::open() {
  client_ = GetParam().has_callback ? open_client(Seen::callback, &seen_) : open_client();
}

}  // namespace client_test

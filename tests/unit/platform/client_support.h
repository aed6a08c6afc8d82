// SPDX-License-Identifier: Apache-2.0
// A client of the vendor service, through the library's C interface, and a scripted modem that
// answers it. Most tests use one small message: "read band", whose answer carries a number back.
#pragma once

#include <atomic>

#include "qmi_client.h"
#include "tests/unit/platform/codec_support.h"
#include "tests/unit/platform/scripted_modem.h"

namespace client_test {

using namespace test_support;
using namespace std::chrono_literals;
using codec_test::qorext;

constexpr uint32_t kReadBand = 0x101;
constexpr uint32_t kUtils = 0x0F;
constexpr unsigned kLong = 20000;  // a timeout in milliseconds that is not to be reached

inline qmi_idl_service_object_type vendor() {
  return qorext_vs_get_service_object_internal_v01(1, 1, 4);
}
inline uint32_t vendor_instance() { return qorext().version; }

struct Band {
  uint32_t status;
  uint32_t band;
};

// What a request's packet says.
inline uint16_t transaction_of(const Request& request) {
  return static_cast<uint16_t>(request.packet[1] | request.packet[2] << 8);
}
inline uint32_t number_of(const Request& request) {
  return static_cast<uint32_t>(codec_test::get(request.packet, 10, 4));
}

Bytes packet_of(qmi_idl::WireType type, uint16_t transaction, uint32_t message_id,
                const Bytes& tlvs);
// The answer to "read band" that carries the request's number back.
Bytes band_answer(const Request& request);
// An indication of the utility message with a number as its type.
Bytes utils_indication(uint32_t number);

// A handler that answers "read band" with the request's own number.
void answer(qmi_transport::Server& server, const Request& request);
void stay_silent(qmi_transport::Server& server, const Request& request);

// Sends "read band"; the number comes back in `band`.
int read_band(qmi_client_type client, uint32_t number, Band& band, unsigned timeout_ms = kLong);

// The first instance of the vendor service; fails the test when there is none.
qmi_service_info first_instance();

qmi_client_type open_client(qmi_client_ind_cb callback = nullptr, void* data = nullptr);

// The utility indications that a callback has seen, in their order.
struct Seen {
  std::mutex mutex;
  std::vector<uint32_t> numbers;

  static void callback(qmi_client_type client, unsigned int message_id, void* buffer,
                       unsigned int length, void* seen);
  size_t count();
};

// A client, with or without a callback, over each transport.
struct Setup {
  TransportKind transport;
  bool has_callback;
};

inline void PrintTo(const Setup& setup, std::ostream* out) {
  PrintTo(setup.transport, out);
  *out << (setup.has_callback ? "_with_callback" : "_without_callback");
}

class Client : public testing::TestWithParam<Setup> {
 protected:
  Client();
  ~Client() override;

  // Opens the client of the test.
  void open();

  ModemPlace place_;
  ScriptedModem modem_;
  Seen seen_;
  qmi_client_type client_ = nullptr;
};

inline std::string setup_name(const testing::TestParamInfo<Setup>& info) {
  return testing::PrintToString(info.param);
}

inline auto every_setup() {
  return testing::Values(Setup{TransportKind::unix_socket, false},
                         Setup{TransportKind::unix_socket, true}, Setup{TransportKind::qrtr, false},
                         Setup{TransportKind::qrtr, true});
}

}  // namespace client_test

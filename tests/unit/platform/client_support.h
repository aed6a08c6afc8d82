// SPDX-License-Identifier: Apache-2.0
// A client of the vendor service through the library's C interface, and a scripted modem that
// answers it. Most tests use one small message, "read band", whose answer returns a number.
#pragma once

#include <atomic>

#include "qmi_client.h"
#include "tests/unit/platform/codec_support.h"
#include "tests/unit/platform/scripted_modem.h"

namespace client_test {

using namespace test_support;
using namespace std::chrono_literals;
using codec_test::qorext;
using qmi_idl::WireType;
using qmi_transport::Peer;
using qmi_transport::Server;

constexpr uint32_t kReadBand = 0x101;
constexpr uint32_t kUtils = 0x0F;
constexpr uint32_t kRoamingList = 0x100;
constexpr unsigned kLong = 20000;  // a timeout in milliseconds that is not reached

inline qmi_idl_service_object_type vendor() {
  return qorext_vs_get_service_object_internal_v01(1, 1, 4);
}
inline uint32_t vendor_instance(uint32_t number = 0) { return qorext().version | number << 8; }

// The fields of a request's packet.
inline uint16_t transaction_of(const Request& request) {
  return static_cast<uint16_t>(request.packet[1] | request.packet[2] << 8);
}
inline uint32_t number_of(const Request& request) {
  return static_cast<uint32_t>(codec_test::get(request.packet, 10, 4));
}

Bytes packet_of(WireType type, uint16_t transaction, uint32_t message_id, const Bytes& tlvs);
// A response to the request, with any TLVs.
Bytes response_to(const Request& request, uint32_t message_id, const Bytes& tlvs);
// The response to "read band" with the request's number.
Bytes band_answer(const Request& request);
// An indication of the utility message with a number as its type.
Bytes utils_indication(uint32_t number);

// Handlers of the modem.
void answer(Server& server, const Request& request);
void stay_silent(Server& server, const Request& request);
// Answers every request with the same TLVs.
ScriptedModem::Handler answer_with_tlvs(uint32_t message_id, const Bytes& tlvs);

// The structure of the "read band" response.
struct Band {
  uint32_t status;
  uint32_t band;
};

struct Outcome {
  int code;
  uint32_t number;
  bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& outcome, std::ostream* out);
inline Outcome success(uint32_t number) { return {QMI_NO_ERR, number}; }

// Sends "read band" with a number. A failure has the number 0.
Outcome read_band(qmi_client_type client, uint32_t number, unsigned timeout_ms = kLong);
// The same for the result code alone.
inline int code_of(qmi_client_type client, unsigned timeout_ms = kLong) {
  return read_band(client, 1, timeout_ms).code;
}

// Sends the longest request; its response has one u32.
int send_longest(qmi_client_type client, uint32_t& status, unsigned timeout_ms = kLong);

// Runs `send(number)` for each number on a thread of its own and waits for all.
void run_senders(uint32_t first, uint32_t count, const std::function<void(uint32_t)>& send);

// The first instance of the vendor service. Fails the test when there is none.
qmi_service_info first_instance();

qmi_client_type open_client(qmi_client_ind_cb callback = nullptr, void* data = nullptr);

// The numbers of the utility indications that a callback has received, in order.
struct Seen {
  std::mutex mutex;
  std::vector<uint32_t> numbers;

  static void callback(qmi_client_type client, unsigned int message_id, void* buffer,
                       unsigned int length, void* seen);
  void add(uint32_t number);
  size_t count();
};

// A callback that blocks until the test lets it return. Accepts any message with a u32 in TLV 0x01.
struct Turnstile {
  Seen seen;
  std::atomic<size_t> entered = 0;

  static void callback(qmi_client_type client, unsigned int message_id, void* buffer,
                       unsigned int length, void* turnstile);
  void let_one_through();
  void open();
  void shut();
  // Waits until a callback has entered.
  void wait_for_entry();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  size_t allowed_ = 0;
  bool is_open_ = false;
};

// The errors logged since the last call, as "TAG: TEXT".
std::vector<std::string> take_log_lines();

// A modem with the vendor service and one client of it.
class ModemAndClient {
 protected:
  explicit ModemAndClient(TransportKind kind, const qmi_transport::ServerLimits& limits = {});
  ~ModemAndClient();

  void publish() { modem_.publish(qorext().id, vendor_instance()); }
  void withdraw() { modem_.withdraw(qorext().id); }
  void open(qmi_client_ind_cb callback, void* data) { client_ = open_client(callback, data); }
  int release() { return qmi_client_release(std::exchange(client_, nullptr)); }

  ModemPlace place_;
  ScriptedModem modem_;
  // For callbacks. Members, so that they live until the client is released.
  Seen seen_;
  Turnstile turnstile_;
  qmi_client_type client_ = nullptr;
};

// Over each transport, with and without a callback.
struct Setup {
  TransportKind transport;
  bool has_callback;
};
void PrintTo(const Setup& setup, std::ostream* out);

class Client : public ModemAndClient, public testing::TestWithParam<Setup> {
 protected:
  Client() : ModemAndClient(GetParam().transport) {}

  // Opens the client of the test.
  void open();
};

class OpenClient : public Client {
 protected:
  OpenClient() { open(); }
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

// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/client_support.h"

#include <android/log.h>
#include <stdarg.h>

namespace client_test {
namespace {

constexpr size_t kMaxLine = 1024;

std::mutex g_log_mutex;
std::vector<std::string> g_log_lines;

}  // namespace

Bytes packet_of(WireType type, uint16_t transaction, uint32_t message_id, const Bytes& tlvs) {
  Bytes packet(qmi_idl::kHeaderSize);
  qmi_idl::store_header(
      {type, transaction, static_cast<uint16_t>(message_id), static_cast<uint16_t>(tlvs.size())},
      std::span(packet).first<qmi_idl::kHeaderSize>());
  packet.insert(packet.end(), tlvs.begin(), tlvs.end());
  return packet;
}

Bytes response_to(const Request& request, uint32_t message_id, const Bytes& tlvs) {
  return packet_of(WireType::response, transaction_of(request), message_id, tlvs);
}

Bytes band_answer(const Request& request) {
  Bytes tlvs = {0x01, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  codec_test::put(tlvs, 7, number_of(request), 4);
  return response_to(request, kReadBand, tlvs);
}

Bytes utils_indication(uint32_t number) {
  Bytes tlvs = {0x01, 4, 0, 0, 0, 0, 0, 0x02, 3, 0, 1, 0, 0xAB};
  codec_test::put(tlvs, 3, number, 4);
  return packet_of(WireType::indication, 0, kUtils, tlvs);
}

void answer(Server& server, const Request& request) {
  server.send(request.peer, band_answer(request));
}

void stay_silent(Server&, const Request&) {}

ScriptedModem::Handler answer_with_tlvs(uint32_t message_id, const Bytes& tlvs) {
  return [=](Server& server, const Request& request) {
    server.send(request.peer, response_to(request, message_id, tlvs));
  };
}

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << "code " << outcome.code << ", number " << outcome.number;
}

Outcome read_band(qmi_client_type client, uint32_t number, unsigned timeout_ms) {
  Band band{};
  int code = qmi_client_send_msg_sync(client, kReadBand, &number, sizeof(number), &band,
                                      sizeof(band), timeout_ms);
  return {code, code == QMI_NO_ERR ? band.band : 0};
}

int send_longest(qmi_client_type client, uint32_t& status, unsigned timeout_ms) {
  Bytes segment(16388, 0x77);
  codec_test::put(segment, 0, 16384, 4);
  return qmi_client_send_msg_sync(client, kRoamingList, segment.data(), 16388, &status, 4,
                                  timeout_ms);
}

void run_senders(uint32_t first, uint32_t count, const std::function<void(uint32_t)>& send) {
  std::vector<std::thread> senders;
  for (uint32_t i = 0; i < count; ++i) senders.emplace_back([=, &send] { send(first + i); });
  for (auto& sender : senders) sender.join();
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
  static_cast<Seen*>(seen)->add(number);
}

void Seen::add(uint32_t number) {
  std::lock_guard lock(mutex);
  numbers.push_back(number);
}

size_t Seen::count() {
  std::lock_guard lock(mutex);
  return numbers.size();
}

void Turnstile::callback(qmi_client_type, unsigned int, void* buffer, unsigned int length,
                         void* turnstile) {
  auto& self = *static_cast<Turnstile*>(turnstile);
  ++self.entered;
  {
    std::unique_lock lock(self.mutex_);
    self.changed_.wait(lock, [&self] { return self.is_open_ || self.allowed_ > 0; });
    if (!self.is_open_) --self.allowed_;
  }
  auto* bytes = static_cast<const uint8_t*>(buffer);
  self.seen.add(static_cast<uint32_t>(codec_test::get(Bytes(bytes, bytes + length), 3, 4)));
}

void Turnstile::let_one_through() {
  std::lock_guard lock(mutex_);
  ++allowed_;
  changed_.notify_one();
}

void Turnstile::open() {
  std::lock_guard lock(mutex_);
  is_open_ = true;
  changed_.notify_one();
}

void Turnstile::shut() {
  std::lock_guard lock(mutex_);
  is_open_ = false;
}

void Turnstile::wait_for_entry() {
  EXPECT_TRUE(eventually([this] { return entered > 0; }));
}

std::vector<std::string> take_log_lines() {
  std::lock_guard lock(g_log_mutex);
  return std::exchange(g_log_lines, {});
}

ModemAndClient::ModemAndClient(TransportKind kind, const qmi_transport::ServerLimits& limits)
    : place_(kind), modem_(place_.endpoint(), answer, limits) {
  publish();
  take_log_lines();
}

ModemAndClient::~ModemAndClient() {
  turnstile_.open();
  if (client_ != nullptr) qmi_client_release(client_);
}

void PrintTo(const Setup& setup, std::ostream* out) {
  PrintTo(setup.transport, out);
  *out << (setup.has_callback ? "_with_callback" : "_without_callback");
}

void Client::open() {
  ModemAndClient::open(GetParam().has_callback ? Seen::callback : nullptr, &seen_);
}

}  // namespace client_test

// Replaces the log library's function in this program.
extern "C" __attribute__((visibility("default"))) int __android_log_print(int priority,
                                                                          const char* tag,
                                                                          const char* format, ...) {
  char text[client_test::kMaxLine];
  va_list arguments;
  va_start(arguments, format);
  int length = vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  if (priority != ANDROID_LOG_ERROR) return length;
  std::lock_guard lock(client_test::g_log_mutex);
  client_test::g_log_lines.push_back(std::string(tag) + ": " + text);
  return length;
}

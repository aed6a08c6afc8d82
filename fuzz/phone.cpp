// SPDX-License-Identifier: Apache-2.0
#include "fuzz/phone.h"

#include <NativeDropBoxWriter.h>
#include <android/log.h>
#include <cutils/properties.h>
#include <errno.h>
#include <pthread.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "fuzz/support.h"
#include "qorext_vendor_service_v01.h"
#include "src/capture/capture.h"
#include "src/carrier_modem/carrier_clients.h"
#include "src/host/base/parent.h"
#include "src/host/host.h"
#include "src/vendor/vendor_client.h"

namespace fuzz {
namespace {

constexpr size_t kMaxLine = 64 * 1024;
constexpr int kMinError = QMI_INVALID_PARAM_ERR;
constexpr int kMaxErrno = 130;
constexpr unsigned int kMaxServices = 20;
constexpr char kLogTag[] = "RIL-QOREXT";
constexpr char kDropBoxTag[] = "modem_vorn";

Phone* g_phone = nullptr;
qmi_client_ind_cb g_callback = nullptr;
char g_notifier;

int consume_error() {
  return phone().input.ConsumeBool() ? phone().input.ConsumeIntegralInRange(kMinError, -1) : 0;
}

int bring_up_result() { return phone().has_fuzzed_bring_up ? consume_error() : 0; }

bool is_zero(std::span<const uint8_t> bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

// The product's structure must have the size in the service's description.
void require_described(const qmi_idl::Service& service, qmi_idl::Direction direction,
                       unsigned int id, size_t size) {
  const qmi_idl::Message* message = qmi_idl::find(service, direction, id);
  FUZZ_REQUIRE(message != nullptr);
  FUZZ_REQUIRE(message->size == size);
}

int consume_answer(const Exchange& exchange) {
  int rc = consume_error();
  phone().fill(exchange.response);
  return rc;
}

ssize_t keep_frame(std::vector<Bytes>& frames, const void* buffer, size_t size) {
  auto* bytes = static_cast<const uint8_t*>(buffer);
  frames.emplace_back(bytes, bytes + size);
  if (!phone().input.ConsumeBool()) return static_cast<ssize_t>(size);
  errno = phone().input.ConsumeIntegralInRange(1, kMaxErrno);
  return -1;
}

}  // namespace

Phone::Phone(FuzzedDataProvider& from) : input(from), modem(consume_answer), now(time(nullptr)) {
  g_phone = this;
}

Phone::~Phone() { g_phone = nullptr; }

void Phone::fill(std::span<uint8_t> bytes) {
  auto size = input.ConsumeIntegralInRange<size_t>(0, bytes.size());
  if (size > 0) input.ConsumeData(bytes.data(), size);
}

Phone& phone() {
  FUZZ_REQUIRE(g_phone != nullptr);
  return *g_phone;
}

void bring_up() {
  FuzzedDataProvider nothing(nullptr, 0);
  Phone phone(nothing);
  set_parent_pipes(kReplyFd, kUnsolicitedFd);
  FUZZ_REQUIRE(qmi_qorext_sprint_client_init() == 0);
  FUZZ_REQUIRE(qmi_qorext_hook_client_init(handleUnsolMsg) == 0);
}

qmi_client_ind_cb indication_callback() { return g_callback; }

}  // namespace fuzz

using namespace fuzz;

bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  FUZZ_REQUIRE(strcmp(tag, kDropBoxTag) == 0);
  FUZZ_REQUIRE(strlen(text) > 0);
  return phone().input.ConsumeBool();
}

extern "C" {

int __android_log_print(int priority, const char* tag, const char* text, ...) {
  static char line[kMaxLine];
  va_list arguments;
  va_start(arguments, text);
  int size = vsnprintf(line, sizeof line, text, arguments);
  va_end(arguments);
  FUZZ_REQUIRE(strcmp(tag, kLogTag) == 0);
  FUZZ_REQUIRE(priority == ANDROID_LOG_ERROR || priority == ANDROID_LOG_DEBUG);
  FUZZ_REQUIRE(size >= 0 && static_cast<size_t>(size) < sizeof line);
  if (g_phone != nullptr && g_phone->on_log) g_phone->on_log(line);
  return 1;
}

int property_get(const char* /*key*/, char* value, const char* default_value) {
  std::string value_text = phone().input.ConsumeRandomLengthString(PROPERTY_VALUE_MAX - 1);
  const char* text =
      value_text.empty() && default_value != nullptr ? default_value : value_text.c_str();
  return snprintf(value, PROPERTY_VALUE_MAX, "%s", text);
}

int property_set(const char* key, const char* value) {
  FUZZ_REQUIRE(strlen(value) < PROPERTY_VALUE_MAX);
  phone().properties[key] = value;
  return 0;
}

int qmi_client_notifier_init(qmi_idl_service_object_type, qmi_client_os_params* signal,
                             qmi_client_type* notifier) {
  int rc = bring_up_result();
  if (rc != 0) return rc;
  *signal = {};
  signal->clock = phone().has_fuzzed_bring_up && phone().input.ConsumeBool() ? 1 : 0;
  pthread_mutex_init(&signal->mutex, nullptr);
  pthread_cond_init(&signal->cond, nullptr);
  *notifier = &g_notifier;
  return 0;
}

int qmi_client_get_service_list(qmi_idl_service_object_type, qmi_service_info* list,
                                unsigned int* entries, unsigned int* services) {
  *services = 1;
  if (phone().has_fuzzed_bring_up) {
    *services = phone().input.ConsumeIntegralInRange(0U, kMaxServices);
  }
  if (list != nullptr) memset(list, 0xFF, *entries * sizeof *list);
  return bring_up_result();
}

int qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                    qmi_client_ind_cb callback, void*, qmi_client_os_params*,
                    qmi_client_type* client) {
  FUZZ_REQUIRE(info != nullptr);
  int rc = bring_up_result();
  if (rc != 0) return rc;
  if (callback != nullptr) g_callback = callback;
  *client = service;
  return 0;
}

int qmi_client_release(qmi_client_type client) {
  FUZZ_REQUIRE(client == &g_notifier);
  return 0;
}

int qmi_client_send_msg_sync(qmi_client_type client, unsigned int id, void* request,
                             unsigned int request_length, void* response,
                             unsigned int response_length, unsigned int timeout_ms) {
  const qmi_idl::Service& service = qmi_idl::service_of(client);
  require_described(service, qmi_idl::Direction::request, id, request_length);
  require_described(service, qmi_idl::Direction::response, id, response_length);
  FUZZ_REQUIRE(timeout_ms == kModemTimeoutMs);

  auto* from = static_cast<const uint8_t*>(request);
  std::span answer(static_cast<uint8_t*>(response), response_length);
  FUZZ_REQUIRE(is_zero(answer));
  const Bytes sent(from, from + request_length);
  return phone().modem({service, id, sent, answer});
}

int qmi_client_message_decode(qmi_client_type client, qmi_idl_type_of_message_type type,
                              unsigned int id, const void* buffer, unsigned int length,
                              void* decoded, unsigned int decoded_length) {
  FUZZ_REQUIRE(type == QMI_IDL_INDICATION);
  require_described(qmi_idl::service_of(client), qmi_idl::Direction::indication, id,
                    decoded_length);
  auto* encoded = static_cast<const uint8_t*>(buffer);
  const Bytes received(encoded, encoded + length);
  phone().fill({static_cast<uint8_t*>(decoded), decoded_length});
  return consume_error();
}

// System calls, through the linker's --wrap. Those of the fuzzer itself are passed on.

int __real_select(int, fd_set*, fd_set*, fd_set*, timeval*);
int __wrap_select(int count, fd_set* readable, fd_set* writable, fd_set* failed, timeval* timeout) {
  if (count != kRequestFd + 1) return __real_select(count, readable, writable, failed, timeout);
  FUZZ_REQUIRE(FD_ISSET(kRequestFd, readable));
  return 1;
}

ssize_t __real_read(int, void*, size_t);
ssize_t __wrap_read(int fd, void* buffer, size_t size) {
  if (fd != kRequestFd) return __real_read(fd, buffer, size);
  const Bytes request = phone().next_request();
  FUZZ_REQUIRE(request.size() <= size);
  if (!request.empty()) memcpy(buffer, request.data(), request.size());
  return static_cast<ssize_t>(request.size());
}

ssize_t __real_write(int, const void*, size_t);
ssize_t __wrap_write(int fd, const void* buffer, size_t size) {
  if (fd == kReplyFd) return keep_frame(phone().replies, buffer, size);
  if (fd == kUnsolicitedFd) return keep_frame(phone().unsolicited, buffer, size);
  return __real_write(fd, buffer, size);
}

int __wrap_setuid(uid_t) { return 0; }
void __wrap_sync() {}
int __wrap_fsync(int) { return 0; }

time_t __real_time(time_t*);
time_t __wrap_time(time_t* out) { return g_phone != nullptr ? g_phone->now : __real_time(out); }

// The signal is never set, and the wait times out immediately.
int __wrap_pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec*) {
  return ETIMEDOUT;
}

// The product's only thread runs synchronously, so that it consumes the input in a fixed order.
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
  if (body != dhob_write) return __real_pthread_create(thread, attributes, body, argument);
  dhob_write(argument);
  return 0;
}

}  // extern "C"

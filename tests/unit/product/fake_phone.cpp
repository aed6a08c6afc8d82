// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/product/fake_phone.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "device_management_service_v01.h"
#include "network_access_service_v01.h"
#include "qorext_vendor_service_v01.h"
#include "src/host/base/framing.h"

namespace {

FakePhone* g_phone = nullptr;

std::string format(const char* text, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  auto size = static_cast<size_t>(vsnprintf(nullptr, 0, text, copy));
  va_end(copy);
  std::string line(size, '\0');
  vsnprintf(line.data(), size + 1, text, arguments);
  return line;
}

__attribute__((format(printf, 1, 2))) void record(const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  phone().trace.push_back(format(text, arguments));
  va_end(arguments);
}

// The next value of a script; the last value is repeated.
template <typename T>
T next(std::deque<T>& script) {
  T value = script.front();
  if (script.size() > 1) script.pop_front();
  return value;
}

char g_vendor[] = "vendor";
char g_nas[] = "nas";
char g_dms[] = "dms";
char g_notifier[] = "notifier";

qmi_idl_service_object_type service_object(char* name, int major, int minor, int tool) {
  record("call %s_get_service_object %d %d %d", name, major, minor, tool);
  return phone().has_service_objects ? name : nullptr;
}

[[noreturn]] void exit_with_trace() {
  for (const std::string& line : phone().trace) fprintf(stderr, "%s\n", line.c_str());
  _exit(0);
}

}  // namespace

FakePhone& phone() { return *g_phone; }

FakePhone::FakePhone() {
  g_phone = this;
  modem = [this](const Exchange& exchange, std::span<uint8_t> response) {
    const Bytes& answer = answers_[exchange.id];
    std::copy_n(answer.begin(), std::min<size_t>(answer.size(), response.size()), response.begin());
    auto failure = send_failures_.find(exchange.id);
    return failure == send_failures_.end() ? 0 : failure->second;
  };
}

FakePhone::~FakePhone() { g_phone = nullptr; }

int FakePhone::run_modem(const Exchange& exchange, std::span<uint8_t> response) {
  exchanges.push_back(exchange);
  char line[64];
  snprintf(line, sizeof line, "send %s 0x%x", exchange.service.c_str(), exchange.id);
  trace.emplace_back(line);
  return modem(exchange, response);
}

qmi_client_type FakePhone::vendor_client() { return g_vendor; }

int FakePhone::run_decoder(unsigned int id, std::span<uint8_t> structure) {
  bool is_zeroed =
      std::all_of(structure.begin(), structure.end(), [](uint8_t b) { return b == 0; });
  EXPECT_TRUE(is_zeroed) << "structure of indication " << id;
  const Bytes& decoded = decoded_[id];
  EXPECT_TRUE(decoded.empty() || decoded.size() == structure.size()) << structure.size();
  std::copy_n(decoded.begin(), std::min<size_t>(decoded.size(), structure.size()),
              structure.begin());
  return decode_failures_[id];
}

std::vector<std::string> FakePhone::lines(const std::string& prefix) const {
  std::vector<std::string> found;
  for (const std::string& line : trace) {
    if (line.compare(0, prefix.size(), prefix) == 0) found.push_back(line.substr(prefix.size()));
  }
  return found;
}

std::string hex(std::span<const uint8_t> bytes) {
  std::string text;
  char digits[3];
  for (uint8_t byte : bytes) {
    snprintf(digits, sizeof digits, "%02X", byte);
    text += digits;
  }
  return text;
}

std::string operator""_hex(const char* text, size_t length) {
  std::string digits(text, length);
  std::erase(digits, ' ');
  return digits;
}

Bytes from_hex(const std::string& text) {
  std::string digits = operator""_hex(text.c_str(), text.size());
  Bytes bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

extern "C" {

int __android_log_print(int priority, const char* tag, const char* text, ...) {
  va_list arguments;
  va_start(arguments, text);
  std::string line = format(text, arguments);
  va_end(arguments);

  EXPECT_STREQ(tag, "RIL-QOREXT");
  EXPECT_TRUE(priority == ANDROID_LOG_ERROR || priority == ANDROID_LOG_DEBUG) << priority;
  phone().trace.push_back((priority == ANDROID_LOG_DEBUG ? "debug: " : "log: ") + line);
  if (phone().trace.size() == phone().exit_after_lines) exit_with_trace();
  phone().on_log(line);
  return 1;
}

int property_get(const char* key, char* value, const char* default_value) {
  auto found = phone().properties.find(key);
  const char* text = found != phone().properties.end() ? found->second.c_str() : default_value;
  return snprintf(value, PROPERTY_VALUE_MAX, "%s", text == nullptr ? "" : text);
}

int property_set(const char* key, const char* value) {
  record("call property_set %s=%s", key, value);
  phone().properties[key] = value;
  return 0;
}

qmi_idl_service_object_type nas_get_service_object_internal_v01(int major, int minor, int tool) {
  return service_object(g_nas, major, minor, tool);
}
qmi_idl_service_object_type dms_get_service_object_internal_v01(int major, int minor, int tool) {
  return service_object(g_dms, major, minor, tool);
}
qmi_idl_service_object_type qorext_vs_get_service_object_internal_v01(int major, int minor,
                                                                      int tool) {
  return service_object(g_vendor, major, minor, tool);
}

int qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params* signal,
                             qmi_client_type* notifier) {
  record("call notifier_init %s", static_cast<char*>(service));
  int result = next(phone().notifier_results);
  if (result != 0) return result;
  *signal = {};
  phone().signal = signal;
  signal->clock = phone().clock;
  pthread_mutex_init(&signal->mutex, nullptr);
  pthread_cond_init(&signal->cond, nullptr);
  *notifier = g_notifier;
  return 0;
}

int qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info* list,
                                unsigned int* entries, unsigned int* services) {
  record("call get_service_list %s%s", static_cast<char*>(service), list != nullptr ? " list" : "");
  auto [result, count] = next(phone().service_lists);
  *services = count;
  if (list == nullptr) {
    EXPECT_EQ(entries, nullptr);
    return result;
  }
  phone().entry_counts.push_back(*entries);
  for (unsigned int i = 0; i < *entries; ++i) list[i].opaque[0] = i + 1;
  return result;
}

int qmi_client_init(qmi_service_info* info, qmi_idl_service_object_type service,
                    qmi_client_ind_cb callback, void* callback_data, qmi_client_os_params* signal,
                    qmi_client_type* client) {
  record("call client_init %s", static_cast<char*>(service));
  phone().opened_records.push_back(info->opaque[0]);
  EXPECT_EQ(callback_data, nullptr);
  EXPECT_EQ(signal, nullptr);
  int result = next(phone().init_results);
  if (result != 0) return result;
  phone().indication_callback = callback;
  *client = service;
  return 0;
}

int qmi_client_release(qmi_client_type client) {
  record("call release %s", static_cast<char*>(client));
  return 0;
}

int qmi_client_send_msg_sync(qmi_client_type client, unsigned int message_id, void* request,
                             unsigned int request_length, void* response,
                             unsigned int response_length, unsigned int timeout_ms) {
  auto* from = static_cast<uint8_t*>(request);
  auto* to = static_cast<uint8_t*>(response);
  for (unsigned int i = 0; i < response_length; ++i) {
    EXPECT_EQ(to[i], 0) << "response of " << message_id << " not zeroed at " << i;
  }
  const char* service = client == nullptr ? "closed" : static_cast<char*>(client);
  Exchange exchange{service, message_id, Bytes(from, from + request_length), response_length,
                    timeout_ms};
  return phone().run_modem(exchange, {to, response_length});
}

int qmi_client_message_decode(qmi_client_type client, qmi_idl_type_of_message_type type,
                              unsigned int message_id, const void* buffer, unsigned int length,
                              void* decoded, unsigned int decoded_length) {
  record("call decode 0x%x", message_id);
  EXPECT_EQ(client, FakePhone::vendor_client());
  EXPECT_EQ(type, QMI_IDL_INDICATION);
  EXPECT_EQ(buffer, phone().encoded.data());
  EXPECT_EQ(length, phone().encoded.size());
  return phone().run_decoder(message_id, {static_cast<uint8_t*>(decoded), decoded_length});
}

// System calls, through the linker's --wrap.

int __real_select(int, fd_set*, fd_set*, fd_set*, timeval*);
int __wrap_select(int count, fd_set* readable, fd_set* writable, fd_set* failed, timeval* timeout) {
  if (phone().pipe.empty()) return __real_select(count, readable, writable, failed, timeout);
  EXPECT_EQ(count, kRequestFd + 1);
  EXPECT_EQ(writable, nullptr);
  EXPECT_EQ(failed, nullptr);
  EXPECT_EQ(timeout, nullptr);
  for (int fd = 0; fd < FD_SETSIZE; ++fd) {
    EXPECT_EQ(FD_ISSET(fd, readable), fd == kRequestFd) << fd;
  }
  PipeStep& step = phone().pipe.front();
  int result = step.select_result;
  errno = step.select_errno;
  if (!step.is_set) FD_CLR(kRequestFd, readable);
  if (result != 1 || !step.is_set) phone().pipe.pop_front();
  return result;
}

ssize_t __real_read(int, void*, size_t);
ssize_t __wrap_read(int fd, void* buffer, size_t size) {
  if (fd != kRequestFd) return __real_read(fd, buffer, size);
  EXPECT_EQ(size, kRequestSize);
  auto* bytes = static_cast<const uint8_t*>(buffer);
  EXPECT_TRUE(std::all_of(bytes, bytes + size, [](uint8_t byte) { return byte == 0; }));
  PipeStep step = phone().pipe.front();
  phone().pipe.pop_front();
  if (step.read_errno != 0) {
    errno = step.read_errno;
    return -1;
  }
  size_t given = std::min(size, step.data.size());
  if (given > 0) memcpy(buffer, step.data.data(), given);
  return static_cast<ssize_t>(given);
}

ssize_t __real_write(int, const void*, size_t);
ssize_t __wrap_write(int fd, const void* buffer, size_t size) {
  if (fd != kReplyFd && fd != kUnsolicitedFd) {
    size_t limit = g_phone != nullptr ? phone().file_write_limit.value_or(size) : size;
    return __real_write(fd, buffer, std::min(size, limit));
  }
  phone().on_write(fd);
  if (int failure = next(phone().write_errnos); failure != 0) {
    errno = failure;
    return -1;
  }
  size = std::min(size, phone().write_limit.value_or(size));
  auto* bytes = static_cast<const uint8_t*>(buffer);
  phone().trace.push_back((fd == kReplyFd ? "reply: " : "unsol: ") + hex(std::span(bytes, size)));
  return static_cast<ssize_t>(size);
}

int __wrap_setuid(uid_t user) {
  record("call setuid %u", user);
  return -1;
}

void* __real_calloc(size_t, size_t);
void* __wrap_calloc(size_t count, size_t size) {
  if (g_phone == nullptr || phone().allocations_left < 0) return __real_calloc(count, size);
  if (phone().allocations_left == 0) return nullptr;
  --phone().allocations_left;
  return __real_calloc(count, size);
}

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
  record("call clock_gettime %d", clock);
  *now = phone().fake_now;
  return 0;
}

int __wrap_gettimeofday(timeval* now, void*) {
  record("call gettimeofday");
  *now = {phone().fake_now.tv_sec, phone().fake_now.tv_nsec / 1000};
  return 0;
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                  const timespec* deadline) {
  EXPECT_EQ(pthread_mutex_trylock(mutex), EBUSY) << "waits without holding the mutex";
  EXPECT_EQ(cond, &phone().signal->cond);
  phone().deadlines.push_back(*deadline);
  phone().timed_out_in_waits.push_back(phone().signal->timed_out);
  if (!phone().signal_on_wait) return next(phone().wait_results);
  phone().signal->sig_set = 1;
  return 0;
}

}  // extern "C"

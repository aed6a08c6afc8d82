// SPDX-License-Identifier: Apache-2.0
// A scripted phone: every platform function and system call that the product uses is controlled by
// the test. All effects that are visible outside the product are recorded in one trace, in order.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "qmi_client.h"

constexpr int kRequestFd = 600;
constexpr int kReplyFd = 601;
constexpr int kUnsolicitedFd = 602;

using Bytes = std::vector<uint8_t>;

// Lines of the trace.
using Lines = std::vector<std::string>;

inline Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

struct Exchange {
  std::string service;  // "vendor", "nas", "dms"
  unsigned int id;
  Bytes request;
  unsigned int response_length;
  unsigned int timeout_ms;
};

// Fills the (zeroed) response and returns the client library's code.
using ModemScript = std::function<int(const Exchange&, std::span<uint8_t> response)>;

// What one select() or read() of the request pipe does.
struct PipeStep {
  int select_result = 1;
  int select_errno = 0;
  bool is_set = true;
  int read_errno = 0;
  Bytes data = {};
};

class FakePhone : public testing::Test {
 protected:
  FakePhone();
  ~FakePhone() override;

 public:
  // "log: TEXT" (error priority), "debug: TEXT", "send SERVICE 0xID", "reply: HEX", "unsol: HEX",
  // "call NAME ..." for the rest of the platform.
  std::vector<std::string> trace;

  std::vector<Exchange> exchanges;
  ModemScript modem;
  std::map<std::string, std::string> properties;

  // The service bring-up: results in the order of the calls; the last one is repeated.
  std::deque<int> notifier_results{0};
  struct ServiceList {
    int result;
    unsigned int services;
  };
  std::deque<ServiceList> service_lists{{0, 1}};
  std::deque<int> init_results{0};
  bool has_service_objects = true;
  uint32_t clock = 1;
  bool signal_on_wait = false;
  std::deque<int> wait_results{ETIMEDOUT};   // of pthread_cond_timedwait
  qmi_client_os_params* signal = nullptr;    // of the last notifier
  std::vector<uint32_t> timed_out_in_waits;  // the flag at the start of each wait
  std::vector<unsigned int> entry_counts;    // arguments of qmi_client_get_service_list
  std::vector<unsigned int> opened_records;  // positions in the list, from 1, of qmi_client_init
  qmi_client_ind_cb indication_callback = nullptr;

  std::deque<PipeStep> pipe;
  std::deque<int> write_errnos{0};         // of the frame writes; 0: success; the last is repeated
  std::optional<size_t> write_limit;       // maximum of bytes for one frame write
  std::optional<size_t> file_write_limit;  // the same for other writes
  size_t exit_after_lines = 0;  // prints the trace and exits after so many lines; 0: never
  int allocations_left = -1;    // calloc fails after so many calls; -1: never
  std::function<void(const std::string& text)> on_log = [](const std::string&) {};
  std::function<void(int fd)> on_write = [](int) {};  // during a frame write
  timespec fake_now{1000, 0};                         // of both clocks
  std::vector<timespec> deadlines;

  // Sets the response to this message of any service; the default is QMI success.
  void answer(unsigned int id, const Bytes& response) { answers_[id] = response; }
  void fail_send(unsigned int id, int rc) { send_failures_[id] = rc; }

  // The encoded bytes of indications, which the product must pass to the decoder.
  static qmi_client_type vendor_client();
  Bytes encoded = {0x01, 0x02, 0x00, 0xAB, 0xCD};
  // Sets the structure that indications of this id decode to (default: zeros) and the decoder's
  // result.
  void decode_to(unsigned int id, const Bytes& structure) { decoded_[id] = structure; }
  void fail_decode(unsigned int id, int rc) { decode_failures_[id] = rc; }

  // The lines of one kind, without their prefix.
  std::vector<std::string> logs() const { return lines("log: "); }
  std::vector<std::string> replies() const { return lines("reply: "); }
  std::vector<std::string> unsolicited() const { return lines("unsol: "); }

  int run_modem(const Exchange& exchange, std::span<uint8_t> response);
  int run_decoder(unsigned int id, std::span<uint8_t> structure);

 private:
  std::vector<std::string> lines(const std::string& prefix) const;

  std::map<unsigned int, Bytes> answers_;
  std::map<unsigned int, int> send_failures_;
  std::map<unsigned int, Bytes> decoded_;
  std::map<unsigned int, int> decode_failures_;
};

// The fixture of the running test.
FakePhone& phone();

std::string hex(std::span<const uint8_t> bytes);
Bytes from_hex(const std::string& text);  // spaces are skipped

// Removes the spaces between groups of digits: "0102 0304"_hex.
std::string operator""_hex(const char* text, size_t length);

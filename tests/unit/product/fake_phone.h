// SPDX-License-Identifier: Apache-2.0
// The phone, scripted: every platform function and system call that the product uses, under the
// control of a test. Whatever the product does that somebody outside could see goes into one trace,
// in order.
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

  // The service bring-up: results in the order of the calls, the last one again and again.
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
  qmi_client_os_params* signal = nullptr;    // as handed to the last notifier
  std::vector<uint32_t> timed_out_in_waits;  // the signal's flag at each wait
  std::vector<unsigned int> entry_counts;    // as handed to qmi_client_get_service_list
  std::vector<unsigned int> opened_records;  // list positions from 1, as handed to qmi_client_init
  qmi_client_ind_cb indication_callback = nullptr;

  std::deque<PipeStep> pipe;
  std::deque<int> write_errnos{0};    // of the frame writes, the last one again and again; 0: none
  std::optional<size_t> write_limit;  // the most bytes that one frame write takes
  std::optional<size_t> file_write_limit;  // the same for other writes
  size_t exit_after_lines = 0;  // non-zero: prints the trace and exits when it has so many lines
  int allocations_left = -1;    // calloc fails once this many have been made; -1: never
  std::function<void(const std::string& text)> on_log = [](const std::string&) {};
  std::function<void(int fd)> on_write = [](int) {};  // while a frame write is under way
  timespec fake_now{1000, 0};                         // what both clocks tell
  std::vector<timespec> deadlines;

  // Bytes for the next responses to this message, whatever the service; QMI success without them.
  void answer(unsigned int id, const Bytes& response) { answers_[id] = response; }
  void fail_send(unsigned int id, int rc) { send_failures_[id] = rc; }

  // What indications arrive with: the product must hand exactly these to the decoder.
  static qmi_client_type vendor_client();
  Bytes encoded = {0x01, 0x02, 0x00, 0xAB, 0xCD};
  // The whole structure that indications of this id decode to, all zero without it; the decoder's
  // result.
  void decode_to(unsigned int id, const Bytes& structure) { decoded_[id] = structure; }
  void fail_decode(unsigned int id, int rc) { decode_failures_[id] = rc; }

  // The trace's lines of one sort, without their prefix.
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

// The fixture of the test that is running.
FakePhone& phone();

std::string hex(std::span<const uint8_t> bytes);
Bytes from_hex(const std::string& text);  // blanks are passed over

// Digits in groups, as one text: "0102 0304"_hex.
std::string operator""_hex(const char* text, size_t length);

// SPDX-License-Identifier: Apache-2.0
// A phone for the product's objects: the functions of the platform libraries, and the system calls
// for the parent's pipes, the clock and threads. The fuzzer's input determines the modem's answers
// and the failures; after the end of the input, answers are zeros and calls succeed.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "fuzz/support.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "qmi_client.h"

namespace fuzz {

constexpr int kRequestFd = 600;
constexpr int kReplyFd = 601;
constexpr int kUnsolicitedFd = 602;

struct Exchange {
  const qmi_idl::Service& service;
  unsigned int id;
  std::span<const uint8_t> request;
  std::span<uint8_t> response;  // zeroed
};

class Phone {
 public:
  explicit Phone(FuzzedDataProvider& input);
  ~Phone();
  Phone(const Phone&) = delete;
  Phone& operator=(const Phone&) = delete;

  // Fills some bytes from the start; the others are unchanged.
  void fill(std::span<uint8_t> bytes);

  FuzzedDataProvider& input;
  std::vector<Bytes> replies;  // every frame written, including failed writes
  std::vector<Bytes> unsolicited;
  std::map<std::string, std::string> properties;  // set by the product

  // Answers a request to the modem and returns the client library's code. By default the input
  // determines both.
  std::function<int(const Exchange&)> modem;
  // Returns the parent's next request of at most kRequestSize bytes; an empty one closes the pipe.
  std::function<Bytes()> next_request;
  std::function<void(const std::string& line)> on_log;

  // Whether the input determines the results of finding the modem's services, too.
  bool has_fuzzed_bring_up = false;
  time_t now;
};

// The current phone; aborts if there is none.
Phone& phone();

// Opens the product's three clients on a phone without failures and sets its pipes, for targets
// that start with a serving process.
void bring_up();

// The callback of the vendor client, after bring_up().
qmi_client_ind_cb indication_callback();

}  // namespace fuzz

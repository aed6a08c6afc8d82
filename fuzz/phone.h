// SPDX-License-Identifier: Apache-2.0
// The phone around the product's objects: every function of the platform libraries, and the system
// calls that reach the parent's pipes, the clock and threads. What the modem answers and what fails
// is drawn from the fuzzer's input; input that has run out stands for zeros and success.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/qmi_idl/descriptor.h"
#include "qmi_client.h"

namespace fuzz {

using Bytes = std::vector<uint8_t>;

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

  // Some bytes, at most as many as there is room for; the rest stays as it is.
  void draw(std::span<uint8_t> room);

  FuzzedDataProvider& input;
  std::vector<Bytes> replies;  // every frame that was written, also those whose write failed
  std::vector<Bytes> unsolicited;
  std::map<std::string, std::string> properties;  // as the product set them

  // What a request to the modem comes to: the client library's code. Without it the input decides.
  std::function<int(const Exchange&)> modem;
  // The next request of the parent, at most kRequestSize bytes; empty: the parent has closed the
  // pipe.
  std::function<Bytes()> next_request;
  std::function<void(const std::string& line)> on_log;

  // Whether the bring-up of the modem's services draws its results from the input too.
  bool is_bring_up_drawn = false;
  time_t now;
};

// The phone that stands; aborts when none does.
Phone& phone();

// Opens the product's three clients on a phone without failures and names its pipes. For targets
// that start with a process that serves.
void bring_up();

// The callback of the vendor client, once it has been opened.
qmi_client_ind_cb indication_callback();

}  // namespace fuzz

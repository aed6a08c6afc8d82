// SPDX-License-Identifier: Apache-2.0
// The requests that the modem was sent, for whoever wants to look at them afterwards.
#pragma once

#include <chrono>
#include <deque>
#include <nlohmann/json.hpp>
#include <span>
#include <vector>

#include "platform/linux/qmi_idl/codec.h"

namespace modem {

qmi_idl::Direction direction_of(qmi_idl::WireType type);
// "request", "response", "indication".
const char* direction_text(qmi_idl::Direction direction);

// A packet's fields by name; null when it cannot be decoded.
nlohmann::json fields_of(const qmi_idl::Service& service, const qmi_idl::Header& header,
                         std::span<const uint8_t> tlvs);

// One line for a person: service, message, kind of message, fields.
std::string packet_text(const qmi_idl::Service& service, std::span<const uint8_t> packet);

class RequestLog {
 public:
  // The oldest ones are dropped above 10000.
  void record(const qmi_idl::Service& service, const qmi_idl::Header& header,
              std::span<const uint8_t> tlvs);
  void clear() { requests_.clear(); }
  // An array of {"service", "message", "fields", "time"}, the oldest first.
  nlohmann::json all() const;

 private:
  // As it came: a request is taken apart when somebody looks at it.
  struct Request {
    const qmi_idl::Service* service;
    qmi_idl::Header header;
    std::vector<uint8_t> tlvs;
    std::chrono::system_clock::time_point time;

    nlohmann::json as_json() const;
  };

  std::deque<Request> requests_;
};

}  // namespace modem

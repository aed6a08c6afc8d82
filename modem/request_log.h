// The requests that the modem was sent, for whoever wants to look at them afterwards.
#pragma once

#include <deque>
#include <nlohmann/json.hpp>
#include <span>

#include "qmi_idl/codec.h"

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
  // {"service", "message", "fields", "time"}; the oldest ones are dropped above 10000.
  void record(const qmi_idl::Service& service, const qmi_idl::Header& header,
              std::span<const uint8_t> tlvs);
  void clear() { requests_.clear(); }
  nlohmann::json all() const { return requests_; }

 private:
  std::deque<nlohmann::json> requests_;
};

}  // namespace modem

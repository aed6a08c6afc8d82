// SPDX-License-Identifier: Apache-2.0
// A phone whose process serves: requests come in through the dispatch tables, indications through
// the intake. Frames are spelled out here as they must lie on the pipes.
#pragma once

#include "src/carrier_modem/carrier_clients.h"
#include "src/host/base/parent.h"
#include "src/host/host.h"
#include "src/vendor/vendor_client.h"
#include "tests/unit/product/fake_phone.h"
#include "tests/unit/product/requests.h"

inline Bytes be32(uint32_t value) {
  return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

inline constexpr unsigned int kUtilityMessage = 0x0F;

// The response to it, whose first word says nothing.
inline Bytes utility_response(uint32_t length, const Bytes& data) {
  return le32(0xEEEEEEEE) + le32(length) + data;
}

// A generic request whose header claims a length, whatever the payload.
inline Request generic_claiming(uint32_t length, uint32_t id, const Bytes& payload = {}) {
  Request request = Request::generic(id, payload);
  Bytes bytes = be32(length);
  std::copy(bytes.begin(), bytes.end(), request.at(kGenericLength));
  return request;
}

// The reply to a generic request of type 1: its id big-endian, the length of the data not.
inline std::string generic_answer(uint32_t id, const Bytes& data) {
  return hex(be32(0x01000000 | id) + le32(static_cast<uint32_t>(data.size())) + data);
}

// Unsolicited messages in the two forms of header.
inline std::string cdma_event(uint32_t id, const Bytes& data) {
  auto length = static_cast<uint32_t>(data.size());
  return hex(le32(0) + le32(20) + le32(id) + le32(length) + le32(0) + Bytes(6) + data + Bytes(2));
}

inline std::string generic_event(const std::string& type_and_id, const Bytes& data) {
  auto length = static_cast<uint32_t>(data.size());
  return hex(le32(1) + le32(8) + from_hex(type_and_id) + le32(length) + data + Bytes(12));
}

inline std::string log_hex(uint32_t value) {
  char digits[16];
  snprintf(digits, sizeof digits, "0x%x", value);
  return digits;
}

// The trace of an indication that the carrier path leaves to the table, up to the lines of its
// handler.
inline Lines declined(unsigned int id, const Lines& handler = {}) {
  return Lines{"log: Handling unsol msg " + std::to_string(static_cast<int>(id)),
               "debug: qor_qmi_sprint_hook_ind_cb: Unknown Indication from Modem.",
               "log: Unsol resp " + log_hex(id) + " not supported by Sprint handler."} +
         handler;
}

// The same for a CDMA-hook request.
inline Lines declined_request(uint32_t id, const Lines& handler) {
  return Lines{"log: qorext_hook_sprint_handler: ENTER ",
               "log: qorext_hook_sprint_handler: Unexpected MSG ID: " + std::to_string(id),
               "log: " + log_hex(id) + " not supported by Sprint handler."} +
         handler;
}

class FeaturePhone : public FakePhone {
 protected:
  FeaturePhone() {
    set_parent_pipes(kReplyFd, kUnsolicitedFd);
    qmi_qorext_sprint_client_init();
    qmi_qorext_hook_client_init(handleUnsolMsg);
    trace.clear();
  }

  static void ask(Request request) {
    dispatch_generic(request.data(), load_be24(request.at(kGenericId)));
  }
  static void ask_cdma(Request request) {
    dispatch_cdma(request.data(), load_le32(request.at(kCdmaId)));
  }

  void indicate(unsigned int id) {
    handleUnsolMsg(vendor_client(), id, encoded.data(), static_cast<unsigned int>(encoded.size()),
                   nullptr);
  }

  // The one request that went to the modem.
  const Exchange& sent() const {
    EXPECT_EQ(exchanges.size(), 1u);
    return exchanges.at(0);
  }
};

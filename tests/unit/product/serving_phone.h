// SPDX-License-Identifier: Apache-2.0
// A phone whose daemon serves: its pipes are set and its modem clients are open. Requests come in
// as the request loop passes them to the dispatch tables, indications as the client library
// delivers them. Frames are written out here as they must lie on the pipes.
#pragma once

#include <string>
#include <type_traits>

#include "src/carrier_modem/carrier_clients.h"
#include "src/host/base/framing.h"
#include "src/host/base/parent.h"
#include "src/host/host.h"
#include "src/vendor/vendor_client.h"
#include "tests/unit/product/fake_phone.h"

class Request {
 public:
  static Request cdma(uint32_t id, const Bytes& payload = {}) {
    Request request;
    store_le32(request.at(kCdmaId), id);
    store_le32(request.at(kCdmaLength), static_cast<uint32_t>(payload.size()));
    std::copy(payload.begin(), payload.end(), request.at(kCdmaPayload));
    return request;
  }

  static Request generic(uint32_t id, const Bytes& payload = {}, uint8_t type = 1) {
    Request request;
    auto length = static_cast<uint32_t>(payload.size());
    uint8_t header[] = {type,
                        static_cast<uint8_t>(id >> 16),
                        static_cast<uint8_t>(id >> 8),
                        static_cast<uint8_t>(id),
                        static_cast<uint8_t>(length >> 24),
                        static_cast<uint8_t>(length >> 16),
                        static_cast<uint8_t>(length >> 8),
                        static_cast<uint8_t>(length)};
    std::copy(std::begin(header), std::end(header), request.at(0));
    std::copy(payload.begin(), payload.end(), request.at(kGenericPayload));
    return request;
  }

  // Sets the length in the header, which may differ from the payload's.
  Request&& claiming(uint32_t length) && {
    store_le32(at(kCdmaLength), length);
    return std::move(*this);
  }

  Request&& with_code(const std::string& code) && {
    std::copy(code.begin(), code.end(), at(kCdmaCode));
    return std::move(*this);
  }

  uint8_t* at(size_t offset) { return bytes_.data() + offset; }
  uint8_t* data() { return bytes_.data(); }

 private:
  Bytes bytes_ = Bytes(kRequestSize);
};

inline Bytes le16(uint16_t value) {
  Bytes bytes(2);
  store_le16(bytes.data(), value);
  return bytes;
}

inline Bytes le32(uint32_t value) {
  Bytes bytes(4);
  store_le32(bytes.data(), value);
  return bytes;
}

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Bytes text(const std::string& characters) {
  return Bytes(characters.begin(), characters.end());
}

// Distinct bytes: 1, 2, 3, ...
inline Bytes numbered(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
  return bytes;
}

// The modem's response to an element read; `length` is the length it states.
inline Bytes read_answer(uint32_t rde_id, uint32_t length, const Bytes& data, uint32_t result = 0,
                         uint32_t error = 0) {
  return le32(result) + le32(error) + le32(rde_id) + le32(7) + le32(8) + le32(length) +
         le32(static_cast<uint32_t>(data.size())) + data;
}

// A CDMA-hook reply as written to the pipe.
inline std::string reply(uint32_t id, uint32_t status, const Bytes& data = {}) {
  auto length = static_cast<uint32_t>(data.size());
  return hex(le32(id) + le32(length) + le32(status) + Bytes(6) + data + Bytes(2));
}

inline Bytes be32(uint32_t value) {
  return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

inline constexpr unsigned int kUtilityMessage = 0x0F;

// The response to it; its first 32 bits are not used.
inline Bytes utility_response(uint32_t length, const Bytes& data) {
  return le32(0xEEEEEEEE) + le32(length) + data;
}

// A generic request with this length in its header.
inline Request generic_claiming(uint32_t length, uint32_t id, const Bytes& payload = {}) {
  Request request = Request::generic(id, payload);
  Bytes bytes = be32(length);
  std::copy(bytes.begin(), bytes.end(), request.at(kGenericLength));
  return request;
}

// The reply to a generic request of type 1: the id is big-endian, the length little-endian.
inline std::string generic_answer(uint32_t id, const Bytes& data) {
  return hex(be32(0x01000000 | id) + le32(static_cast<uint32_t>(data.size())) + data);
}

// Unsolicited messages with the two forms of header.
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

// The trace of an indication that the carrier path declines, with the lines of its handler.
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

// A row of a table of cases; its name is the name of its test.
struct NamedRow {
  const char* name;
};

template <typename Row>
requires std::is_base_of_v<NamedRow, Row>
void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

inline constexpr auto kNameOfRow = [](const auto& row) { return std::string(row.param.name); };

class ServingPhone : public FakePhone {
 protected:
  ServingPhone() {
    set_parent_pipes(kReplyFd, kUnsolicitedFd);
    qmi_qorext_sprint_client_init();
    qmi_qorext_hook_client_init(handleUnsolMsg);
    trace.clear();
  }

  // Trace and exchanges are those of the latest request.
  void ask(Request request) {
    forget();
    dispatch_generic(request.data(), load_be24(request.at(kGenericId)));
  }
  void ask_cdma(Request request) {
    forget();
    dispatch_cdma(request.data(), cdma_id(request.data()));
  }
  void forget() {
    trace.clear();
    exchanges.clear();
  }

  void indicate(unsigned int id) {
    handleUnsolMsg(vendor_client(), id, encoded.data(), static_cast<unsigned int>(encoded.size()),
                   nullptr);
  }

  // The one message that was sent to the modem.
  const Exchange& sent() const {
    EXPECT_EQ(exchanges.size(), 1u);
    return exchanges.at(0);
  }
};

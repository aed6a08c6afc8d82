// SPDX-License-Identifier: Apache-2.0
// A serving phone whose modem has NV items, for tests of the carrier's requests.
#pragma once

#include <set>

#include "src/carrier/carrier_handler.h"
#include "tests/unit/product/serving_phone.h"

// A line with a number at its end.
inline Lines numbered_line(const std::string& text, uint32_t number, const char* end = " ") {
  return {"log: " + text + std::to_string(static_cast<int32_t>(number)) + end};
}

// The modem's refusal in a message whose result word is zero for success.
inline const Bytes kRefusal = le32(1) + le32(16);

class CarrierPhone : public ServingPhone {
 protected:
  CarrierPhone() {
    modem = [this, by_message = modem](const Exchange& exchange, std::span<uint8_t> response) {
      Bytes item = answer_of_item(exchange);
      if (item.empty()) return by_message(exchange, response);
      std::copy(item.begin(), item.end(), response.begin());
      return 0;
    };
  }

  // The modem's items by RDE id; other items get the response of answer().
  std::map<uint32_t, Bytes> items;
  std::set<uint32_t> unreadable;
  std::set<uint32_t> unwritable;

  uint32_t offer(Request request) {
    forget();
    return qorext_hook_sprint_handler(request.data(), 0xFFFFFFFF);
  }

  // The items written, in order.
  struct Write {
    uint32_t item;
    std::string data;
    bool operator==(const Write&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Write& write) {
      return out << write.item << " " << write.data;
    }
  };
  std::vector<Write> writes() const {
    std::vector<Write> found;
    for (const Exchange& exchange : exchanges) {
      if (exchange.id != 9) continue;
      const uint8_t* request = exchange.request.data();
      found.push_back({load_le32(request), hex({request + 20, load_le32(request + 12)})});
    }
    return found;
  }

 private:
  Bytes answer_of_item(const Exchange& exchange) const {
    if (exchange.service != "vendor" || (exchange.id != 8 && exchange.id != 9)) return {};
    uint32_t id = load_le32(exchange.request.data());
    if ((exchange.id == 8 ? unreadable : unwritable).count(id) != 0) return kRefusal;
    auto item = items.find(id);
    if (exchange.id == 9 || item == items.end()) return {};
    return read_answer(id, static_cast<uint32_t>(item->second.size()), item->second);
  }
};

// The trace of an element read and write that succeed.
inline Lines read_lines(uint32_t item, const Bytes& data, uint32_t record = 0,
                        uint32_t offset = 0) {
  std::string size = std::to_string(data.size());
  return {"log: NV Read with RDE index (" + std::to_string(item) + "), recordNum(" +
              std::to_string(record) + "), offset(" + std::to_string(offset) + ").",
          "send vendor 0x8",
          "log: NV Read " + std::to_string(item) + ", length " + size + ", data length " + size +
              ", grde - " + hex(data)};
}

inline Lines write_lines(uint32_t item, const Bytes& data, uint32_t record = 0,
                         uint32_t offset = 0) {
  return {"log: NV Write with RDE index " + std::to_string(item) + ", record number " +
              std::to_string(record) + ", offset " + std::to_string(offset) + ".",
          "log: qor_qmi_sprint_rde_write: hexdump len " + std::to_string(data.size()) + "...",
          "log: HexDump: Data " + hex(data), "send vendor 0x9",
          "log: NV Write success for element " + std::to_string(item)};
}

// The same when the modem refuses.
inline Lines failed_read_lines(uint32_t item) {
  return {"log: NV Read with RDE index (" + std::to_string(item) + "), recordNum(0), offset(0).",
          "send vendor 0x8", "log: NV Read fail - 0, result - 1, error - 16"};
}

inline Lines failed_write_lines(uint32_t item, const Bytes& data) {
  Lines lines = write_lines(item, data);
  lines.back() = "log: NV Write fail - 0, result - 1, error - 16";
  return lines;
}

// The trace of a carrier reply.
inline Lines reply_lines(const std::string& frame) {
  Bytes bytes = from_hex(frame);
  uint32_t id = load_le32(bytes.data());
  uint32_t length = load_le32(bytes.data() + 4);
  const std::string kSend = "qorext_hook_sprint_send_response: ";
  Lines lines = numbered_line(kSend + "ENTER FUNCTION ", id) +
                numbered_line(kSend + "SEND RESPONSE TO APP LAYER Message ID ", id) +
                numbered_line(kSend + "SEND RESPONSE TO APP LAYER Length ", length);
  if (length > 0) lines.push_back("log: " + kSend + "BYTE ARRAY NOT NULL ");
  return lines + numbered_line(kSend + "HEADER ID ", id) + Lines{"reply: " + frame};
}

// A reply with the request's own header, whose code and two bytes after it are kept.
inline std::string own_header_reply(uint32_t id, uint32_t status, const std::string& code,
                                    const Bytes& payload, const Bytes& data = {}) {
  Bytes tail = data.empty() ? Bytes{payload.begin(), payload.begin() + 2} : data + Bytes(2);
  return hex(le32(id) + le32(static_cast<uint32_t>(data.size())) + le32(status) + text(code) +
             tail);
}

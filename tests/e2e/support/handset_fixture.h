// SPDX-License-Identifier: Apache-2.0
// A fixture with a handset that serves requests, and the log messages of every CDMA-hook request.
#pragma once

#include "tests/e2e/support/handset.h"

namespace e2e {

// Logged before the carrier handler checks the request.
inline Texts received(uint32_t id, size_t size) {
  return {
      fmt::format("Read {} bytes from pipe", size), fmt::format("msg Id is {:#x}, type is 0. ", id),
      fmt::format("Received CDMA Hook request {:#x}", id), "qorext_hook_sprint_handler: ENTER "};
}

// Logged with each reply of the carrier handler.
inline Texts sent(uint32_t reply_id, size_t length) {
  std::string sender = "qorext_hook_sprint_send_response: ";
  Texts texts = {sender + fmt::format("ENTER FUNCTION {} ", reply_id),
                 sender + fmt::format("SEND RESPONSE TO APP LAYER Message ID {} ", reply_id),
                 sender + fmt::format("SEND RESPONSE TO APP LAYER Length {} ", length)};
  if (length != 0) texts.push_back(sender + "BYTE ARRAY NOT NULL ");
  texts.push_back(sender + fmt::format("HEADER ID {} ", reply_id));
  return texts;
}

inline Texts handled(uint32_t id) {
  return {fmt::format("{:#x} is handled by Sprint handler.", id)};
}

inline Texts answered(uint32_t id, size_t length) { return sent(id, length) + handled(id); }

// Neither the carrier handler nor the second request table serves the request.
inline Texts not_supported(uint32_t id) {
  return {fmt::format("{:#x} not supported by Sprint handler.", id),
          fmt::format("{:#x} not supported", id)};
}

// The carrier handler does not serve the request.
inline Texts declined(uint32_t id) {
  return {fmt::format("qorext_hook_sprint_handler: Unexpected MSG ID: {}", id),
          fmt::format("{:#x} not supported by Sprint handler.", id)};
}

class HandsetTest : public testing::Test {
 protected:
  // Expects exactly these bytes on the reply pipe. Returns the log.
  Texts expect_reply(const Bytes& request, const Bytes& reply) {
    Served served = handset.serve(request);
    EXPECT_EQ(served.replies, as_hex(reply)) << "request " << as_hex(request);
    return served.log;
  }

  // Also expects the daemon to log this message.
  void expect_reply(const Bytes& request, const Bytes& reply, const std::string& logged) {
    EXPECT_THAT(expect_reply(request, reply), testing::Contains(logged));
  }

  // Expects these replies, the log messages `texts` after those of every request, and `requests` to
  // the modem.
  void expect_effects(const Bytes& request, const Bytes& replies, const Texts& texts,
                      const Texts& requests) {
    Texts start = received(qorextctl::load_le(request, 0, 4), request.size());
    EXPECT_THAT(expect_reply(request, replies), testing::ElementsAreArray(start + texts));
    EXPECT_THAT(handset.modem_requests(), testing::ElementsAreArray(requests));
  }

  // The same for a request that the carrier handler serves, without the log messages of its reply.
  void expect_served(const Bytes& request, const Bytes& expected, const Texts& texts,
                     const Texts& requests) {
    uint32_t id = qorextctl::load_le(request, 0, 4);
    Texts reply_texts =
        sent(qorextctl::load_le(expected, 0, 4), qorextctl::load_le(expected, 4, 4)) + handled(id);
    expect_effects(request, expected, texts + reply_texts, requests);
  }

  // The same for a reply with the request's own header.
  void expect_echoed(const Bytes& request, uint32_t status, const Bytes& data, const Texts& texts,
                     const Texts& requests) {
    expect_served(request, echo(request, status, data), texts, requests);
  }
  void expect_echoed(const Bytes& request, uint32_t status) {
    expect_reply(request, echo(request, status));
  }

  // As expect_served(), with a second reply, "not supported", after the first.
  void expect_served_twice(const Bytes& request, uint32_t status, const Texts& texts,
                           const Texts& requests) {
    uint32_t id = qorextctl::load_le(request, 0, 4);
    expect_effects(request, echo(request, status) + reply(id, 6),
                   texts + sent(id, 0) + not_supported(id), requests);
  }

  // One value of the modem's state: "carrier/bc10".
  std::string stored(const std::string& path) {
    return handset.modem().value("state", "/state/" + path);
  }
  std::string stored_item(uint32_t rde_id) {
    return handset.modem().value(fmt::format("nv {}", rde_id), "/data");
  }

  Handset handset;
};

}  // namespace e2e

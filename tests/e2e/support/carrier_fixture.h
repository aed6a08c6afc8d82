// SPDX-License-Identifier: Apache-2.0
// What every test of a carrier request compares.
#pragma once

#include <gmock/gmock.h>

#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/log_texts.h"

namespace e2e {

class CarrierRequests : public testing::Test {
 protected:
  // The request gets this one reply; between the daemon's usual messages it logs `texts`, and the
  // modem is asked `requests`.
  void expect_served(const Bytes& request, const Bytes& expected, const Texts& texts,
                     const Texts& requests) {
    Served served = handset.serve(request);
    uint32_t id = qorextctl::load_le(request, 0, 4);
    Texts reply_texts =
        sent(qorextctl::load_le(expected, 0, 4), qorextctl::load_le(expected, 4, 4)) + handled(id);
    EXPECT_EQ(served.replies, as_hex(expected));
    EXPECT_THAT(served.log,
                testing::ElementsAreArray(received(id, request.size()) + texts + reply_texts));
    EXPECT_THAT(handset.modem_requests(), testing::ElementsAreArray(requests));
  }

  // The real reply is followed by another one, "not supported".
  void expect_served_twice(const Bytes& request, uint32_t status, const Texts& texts,
                           const Texts& requests) {
    Served served = handset.serve(request);
    uint32_t id = qorextctl::load_le(request, 0, 4);
    EXPECT_EQ(served.replies, as_hex(echo(request, status) + reply(id, 6)));
    EXPECT_THAT(served.log, testing::ElementsAreArray(received(id, request.size()) + texts +
                                                      sent(id, 0) + not_supported(id)));
    EXPECT_THAT(handset.modem_requests(), testing::ElementsAreArray(requests));
  }

  // One value of what the modem has stored: "carrier/bc10".
  std::string stored(const std::string& path) {
    return handset.modem().value("state", "/state/" + path);
  }
  std::string stored_item(uint32_t rde_id) {
    return handset.modem().value(fmt::format("nv {}", rde_id), "/data");
  }

  Handset handset;
};

}  // namespace e2e

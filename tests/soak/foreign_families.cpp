// SPDX-License-Identifier: Apache-2.0
// Requests that nobody serves.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kObsolete[] = {0x020000BB, 0x020000C2, 0x020000C3, 0x020000C6, 0x020000C7,
                                  0x020000C8, 0x020000C9, 0x020000CA, 0x020000CB};
constexpr uint32_t kUnknown[] = {0x02000000, 0x02000005, 0x02000009, 0x0200000B, 0x02000014,
                                 0x0200001B, 0x020000AF, 0x020000CC, 0x020000FF};

Case obsolete(Draws& draws, ModemModel& /*modem*/) {
  Bytes request = cdma(draws.one_of(kObsolete), draws.bytes(draws.below(40)), draw_code(draws));
  return {request, echo(request, 6)};
}

Case unknown(Draws& draws, ModemModel& /*modem*/) {
  uint32_t id = draws.one_of(kUnknown);
  return {cdma(id, draws.bytes(draws.below(40)), draw_code(draws)), reply(id, 6)};
}

Bytes error_reply(Bytes request) {
  request.resize(4);
  return request + hex("FFFFFFFF");
}

Case unknown_generic(Draws& draws, ModemModel& /*modem*/) {
  Bytes request = generic(0x70000 + draws.below(0x10000), draws.bytes(draws.below(40)));
  request[0] = draws.byte();
  return {request, error_reply(request)};
}

// Too short for a header; now and then as long as a request can be.
Case misshapen(Draws& draws, ModemModel& /*modem*/) {
  Bytes request = draws.bytes(draws.between(1, 7));
  if (draws.one_in(10)) request = hex("FFFFFFFF") + draws.bytes(draws.between(4, 17404));
  return {request, error_reply(request)};
}

constexpr Family kForeignFamilies[] = {
    {"obsolete", 3, obsolete},
    {"unknown", 3, unknown},
    {"unknown generic", 3, unknown_generic},
    {"misshapen", 2, misshapen},
};

}  // namespace

std::span<const Family> foreign_families() { return kForeignFamilies; }

}  // namespace soak

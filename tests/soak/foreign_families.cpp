// SPDX-License-Identifier: Apache-2.0
// Requests that the daemon does not serve.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kObsolete[] = {0x020000BB, 0x020000C2, 0x020000C3, 0x020000C6, 0x020000C7,
                                  0x020000C8, 0x020000C9, 0x020000CA, 0x020000CB};
constexpr uint32_t kUnknown[] = {0x02000000, 0x02000005, 0x02000009, 0x0200000B, 0x02000014,
                                 0x0200001B, 0x020000AF, 0x020000CC, 0x020000FF};

Case obsolete(Random& random, ModemModel& /*modem*/) {
  Bytes request =
      cdma(random.one_of(kObsolete), random.bytes(random.below(40)), random_code(random));
  return {request, echo(request, 6)};
}

Case unknown(Random& random, ModemModel& /*modem*/) {
  uint32_t id = random.one_of(kUnknown);
  return {cdma(id, random.bytes(random.below(40)), random_code(random)), reply(id, 6)};
}

Bytes error_reply(Bytes request) {
  request.resize(4);
  return request + hex("FFFFFFFF");
}

Case unknown_generic(Random& random, ModemModel& /*modem*/) {
  Bytes request = generic(0x70000 + random.below(0x10000), random.bytes(random.below(40)));
  request[0] = random.byte();
  return {request, error_reply(request)};
}

// Shorter than a header, or as long as possible.
Case malformed(Random& random, ModemModel& /*modem*/) {
  Bytes request = random.bytes(random.between(1, 7));
  if (random.one_in(10)) request = hex("FFFFFFFF") + random.bytes(random.between(4, 17404));
  return {request, error_reply(request)};
}

constexpr Family kForeignFamilies[] = {
    {"obsolete", 3, obsolete},
    {"unknown", 3, unknown},
    {"unknown generic", 3, unknown_generic},
    {"malformed", 2, malformed},
};

}  // namespace

std::span<const Family> foreign_families() { return kForeignFamilies; }

}  // namespace soak

// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "protocol/request.h"

namespace protocol {

// Requests by number, for ids without a row and for payloads that no row allows. The meaning of
// their bytes is not known, so they are personal.
namespace raw {

constexpr uint32_t kMax24Bit = 0xFFFFFF;

constexpr Argument kGeneric[] = {
    {u32("id", 0), kRequired, "message id", 0, kMax24Bit, Place::id},
    {u8("type", 0), value("1"), "header type", 0, 0, Place::type},
    {personal(hex("data", 0)), value(""), "payload"},
};

constexpr Argument kCdma[] = {
    {u32("id", 0), kRequired, "message id", 0, 0, Place::id},
    {u32("status", 0), value("0"), "the header's status word", 0, 0, Place::status},
    {personal(code("code", 0)), kAbsent, "the header's code field", 0, 0, Place::code},
    {personal(hex("data", 0)), value(""), "payload"},
};

constexpr Field kDataFields[] = {personal(hex("data", 0))};
constexpr Layout kData = {kDataFields};

constexpr Request kRequests[] = {
    {"generic", 0, "any generic request", {kGeneric}, {ReplyForm::generic, &kData}},
    {"cdma", kCdmaIds, "any CDMA-hook request", {kCdma}, {ReplyForm::cdma, &kData}},
};

}  // namespace raw

namespace {

std::vector<Request> all_requests() {
  std::vector<Request> all;
  for (auto table : {nv_requests(), nam_requests(), carrier_requests(), engineering_requests(),
                     feature_requests(), std::span<const Request>(raw::kRequests)}) {
    all.insert(all.end(), table.begin(), table.end());
  }
  return all;
}

}  // namespace

std::span<const Request> catalogue() {
  static const std::vector<Request> all = all_requests();
  return all;
}

const Request* find_request(std::string_view name) {
  for (const Request& request : catalogue()) {
    if (name == request.name) return &request;
  }
  return nullptr;
}

const Request* find_request(Family family, uint32_t id) {
  for (const Request& request : catalogue()) {
    if (family_of(request) == family && request.id == id) return &request;
  }
  return nullptr;
}

}  // namespace protocol

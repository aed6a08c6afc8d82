// SPDX-License-Identifier: Apache-2.0
#include <vector>

#include "protocol/request.h"

namespace protocol {

namespace {

std::vector<Request> all_requests() {
  std::vector<Request> all;
  for (auto table : {nv_requests(), nam_requests(), carrier_requests(), engineering_requests(),
                     feature_requests(), raw_requests()}) {
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

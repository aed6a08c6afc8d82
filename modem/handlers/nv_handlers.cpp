// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "modem/handlers/handlers.h"
#include "modem/handlers/outcome.h"

namespace modem {
namespace {

NvKey key_of(const Fields& request) { return {request.number("rde_id"), request.number("record")}; }

// What is there of `length` bytes from `offset`; all the rest for a length of 0.
Bytes slice(const Bytes& item, uint32_t offset, uint32_t length) {
  size_t start = std::min<size_t>(offset, item.size());
  size_t rest = item.size() - start;
  size_t size = length == 0 ? rest : std::min<size_t>(length, rest);
  auto first = item.begin() + static_cast<ptrdiff_t>(start);
  return {first, first + static_cast<ptrdiff_t>(size)};
}

}  // namespace

void element_read(Device& device, const Fields& request, Fields& response) {
  const Bytes* item = device.state.nv.find(key_of(request));
  if (item == nullptr) return report_failure(response, kErrorNotProvisioned);

  Bytes data = slice(*item, request.number("offset"), request.number("length"));
  response.set("rde_id", request.number("rde_id"));
  response.set("record", request.number("record"));
  response.set("offset", request.number("offset"));
  response.set("length", static_cast<int64_t>(data.size()));
  response.set("data", data);
}

void element_write(Device& device, const Fields& request, Fields& response) {
  Bytes data = request.bytes("data");
  if (request.number("length") != data.size() ||
      !device.state.nv.write(key_of(request), request.number("offset"), data)) {
    report_failure(response, kErrorInvalidArgument);
  }
}

}  // namespace modem

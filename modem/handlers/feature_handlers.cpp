// SPDX-License-Identifier: Apache-2.0
// NV items and features of the vendor service.
#include <algorithm>
#include <iterator>

#include "modem/handlers/handlers.h"

namespace modem {
namespace {

NvKey key_of(const Fields& request) { return {request.number("rde_id"), request.number("record")}; }

// The part of `length` bytes at `offset` that exists; a length of 0 reads to the end.
Bytes slice(const Bytes& item, uint32_t offset, uint32_t length) {
  size_t start = std::min<size_t>(offset, item.size());
  size_t rest = item.size() - start;
  size_t size = length == 0 ? rest : std::min<size_t>(length, rest);
  auto first = item.begin() + static_cast<ptrdiff_t>(start);
  return {first, first + static_cast<ptrdiff_t>(size)};
}

constexpr milliseconds kPfpIndicationDelay{20};

// `data` comes with the request, `answer` goes into the response.
using UtilsHandler = void (*)(Features& features, const Bytes& data, Bytes& answer);

void silent_reboot(Features& features, const Bytes& /*data*/, Bytes& answer) {
  answer = features.silent_reboot_answer;
}

void notice_auto_verify(Features& features, const Bytes& data, Bytes& /*answer*/) {
  features.auto_verify = data;
}

void set_system_info_filter(Features& features, const Bytes& data, Bytes& /*answer*/) {
  features.system_info_filter = data.empty() ? uint8_t{0} : data[0];
}

// One byte of mode, then a NUL-terminated text.
void set_coverage(Features& features, const Bytes& data, Bytes& /*answer*/) {
  if (data.empty()) return;
  auto text = data.begin() + 1;
  features.coverage_mode = data[0];
  features.coverage_text.assign(text, std::find(text, data.end(), uint8_t{0}));
}

void get_call_end_radio_state(Features& features, const Bytes& /*data*/, Bytes& answer) {
  answer = features.call_end_radio_state;
}

struct UtilsRow {
  uint32_t type;
  UtilsHandler handler;
};

constexpr UtilsRow kUtilsRows[] = {
    {3, silent_reboot}, {4, notice_auto_verify},       {5, set_system_info_filter},
    {6, set_coverage},  {7, get_call_end_radio_state},
};

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

void request_pfp(Device& device, const Fields& request, Fields& /*response*/) {
  const Pfp& pfp = device.state.pfp;
  indicate(device.outbox, {.indication = "pfp",
                           .fields = {{"first_value", pfp.first_value},
                                      {"rat", pfp.rat},
                                      {"tbl_idx", request.number("value")},
                                      {"remaining_bytes", qmi_json::to_hex(pfp.remaining_bytes)}},
                           .delay = kPfpIndicationDelay});
}

void serve_utils(Device& device, const Fields& request, Fields& response) {
  uint32_t type = request.number("type");
  const UtilsRow* row =
      std::find_if(std::begin(kUtilsRows), std::end(kUtilsRows),
                   [type](const UtilsRow& candidate) { return candidate.type == type; });
  if (row == std::end(kUtilsRows)) return report_failure(response, kErrorNotSupported);

  Bytes answer;
  row->handler(device.state.features, request.bytes("data"), answer);
  response.set("data", answer);
}

void report_hob(Device& device, const Fields& request, Fields& /*response*/) {
  auto& states = device.state.features.hob_states;
  if (states.size() == kMaxHobStates) states.erase(states.begin());
  states.push_back(request.number("state"));
  if (states.back() != kHobReady) ++device.hob_answers;
}

void get_data_plmn(Device& device, const Fields& /*request*/, Fields& response) {
  response.set("record", device.state.carrier.data_plmn);
}

void set_tuner(Device& device, const Fields& request, Fields& response) {
  Bytes& tuner = device.state.features.tuner;
  tuner = request.bytes("data");
  response.set("data", tuner);
}

}  // namespace modem

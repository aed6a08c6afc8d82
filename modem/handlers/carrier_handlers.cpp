// SPDX-License-Identifier: Apache-2.0
// Carrier settings of the vendor service.
#include <algorithm>
#include <string>

#include "modem/handlers/handlers.h"

namespace modem {
namespace {

constexpr uint32_t kEngineeringTypeEvdo = 1;

// In the order of the band selector.
uint32_t* find_band(Carrier& carrier, uint32_t selector) {
  uint32_t* const bands[] = {&carrier.bc10, &carrier.bc14};
  return selector < std::size(bands) ? bands[selector] : nullptr;
}

template <typename Record>
std::string text_of(const std::string& given, const Record& record) {
  if (!given.empty()) return given;
  return qmi_json::to_hex({reinterpret_cast<const uint8_t*>(&record), sizeof record});
}

}  // namespace

void get_engineering_info(Device& device, const Fields& request, Fields& response) {
  const Engineering& engineering = device.state.engineering;
  uint32_t type = request.number("type");
  if (type > kEngineeringTypeEvdo) return report_failure(response, kErrorInvalidArgument);

  std::string text = type == kEngineeringTypeEvdo
                         ? text_of(engineering.evdo_text, engineering.evdo)
                         : text_of(engineering.call_processing_text, engineering.call_processing);
  response.set("data", Bytes(text.begin(), text.end()));
}

void factory_reset(Device& device, const Fields& /*request*/, Fields& /*response*/) {
  device.state = device.factory;
}

void set_roaming_list_segment(Device& device, const Fields& request, Fields& /*response*/) {
  RoamingList& list = device.state.carrier.roaming_list;
  list.last_segment = request.bytes("segment");
  ++list.segments;
}

void read_band(Device& device, const Fields& request, Fields& response) {
  const uint32_t* band = find_band(device.state.carrier, request.number("selector"));
  if (band == nullptr) return report_failure(response, kErrorInvalidArgument);
  response.set("band", *band);
}

void write_band(Device& device, const Fields& request, Fields& response) {
  uint32_t* band = find_band(device.state.carrier, request.number("selector"));
  if (band == nullptr) return report_failure(response, kErrorInvalidArgument);
  *band = request.number("band");
}

void switch_profile(Device& device, const Fields& request, Fields& /*response*/) {
  device.state.carrier.active_profile = request.number("profile");
}

void get_tot_order(Device& device, const Fields& /*request*/, Fields& response) {
  const auto& order = device.state.carrier.tot_order;
  response.set("entries", std::vector<int64_t>(order.begin(), order.end()));
}

void update_tot_order(Device& device, const Fields& request, Fields& /*response*/) {
  std::vector<int64_t> entries = request.numbers("entries");
  device.state.carrier.tot_order.assign(entries.begin(), entries.end());
}

void get_active_ehrpd_apn(Device& device, const Fields& /*request*/, Fields& response) {
  const auto& apns = device.state.ehrpd_apns;
  response.set("count", static_cast<int64_t>(apns.size()));
  response.set("count_high", apns.empty() ? 0 : 1);
  for (size_t i = 0; i < apns.size(); ++i) {
    response.set("first_value", apns[i].first_value, i);
    response.set("second_value", apns[i].second_value, i);
    response.set("name", Bytes(apns[i].name.begin(), apns[i].name.end()), i);
    response.set("remaining_bytes", apns[i].remaining_bytes, i);
  }
}

void get_lte_service_state(Device& device, const Fields& /*request*/, Fields& response) {
  response.set("state", device.state.lte.service_state);
}

void get_bsr_timer(Device& device, const Fields& /*request*/, Fields& response) {
  response.set("timer", device.state.carrier.bsr_timer);
}

void set_bsr_timer(Device& device, const Fields& request, Fields& /*response*/) {
  device.state.carrier.bsr_timer = request.number("timer");
}

void get_lte_channel(Device& device, const Fields& /*request*/, Fields& response) {
  const LteCell& cell = device.state.lte;
  if (cell.service_state == kNoService) return;
  response.set("first_channel", cell.first_channel);
  response.set("second_channel", cell.second_channel);
  response.set("third_value", cell.channel_third_value);
  response.set("fourth_value", cell.channel_fourth_value);
}

}  // namespace modem

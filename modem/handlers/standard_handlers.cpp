// SPDX-License-Identifier: Apache-2.0
// NAS and DMS.
#include <algorithm>
#include <string>

#include "modem/handlers/handlers.h"
#include "modem/state/gsm_alphabet.h"
#include "modem/state/nam.h"

namespace modem {
namespace {

// Values of the NAS service's enumerations.
constexpr int64_t kRegistered = 1;
constexpr int64_t kNotRegisteredSearching = 2;
constexpr int64_t kAttached = 1;
constexpr int64_t kDetached = 2;
constexpr int64_t kNetwork3gpp = 2;
constexpr int64_t kRadioLte = 8;
constexpr int64_t kGsmAlphabet = 0;
constexpr int64_t kNoCountryInitials = 0;
constexpr int64_t kSpareBitsUnknown = 0;

constexpr size_t kServiceProviderNameSize = 16;
constexpr int64_t kTenthsPerUnit = 10;
constexpr int32_t kSecondAntennaLoss = 2;  // dB

void set_name(Fields& response, const std::string& prefix, const Bytes& name) {
  response.set(prefix + "_coding", kGsmAlphabet);
  response.set(prefix + "_country_initials", kNoCountryInitials);
  response.set(prefix + "_spare_bits", kSpareBitsUnknown);
  response.set(prefix, name);
}

void set_receiver(Fields& response, const std::string& prefix, const LteCell& cell, int32_t loss) {
  response.set(prefix + "_tuned", 1);
  response.set(prefix + "_power", kTenthsPerUnit * (cell.rssi - loss));
  response.set(prefix + "_rsrp", kTenthsPerUnit * (cell.rsrp - loss));
}

}  // namespace

void get_serving_system(Device& device, const Fields& /*request*/, Fields& response) {
  const LteCell& cell = device.state.lte;
  bool is_served = cell.service_state == kFullService;
  response.set("registration_state", is_served ? kRegistered : kNotRegisteredSearching);
  response.set("cs_attach_state", is_served ? kAttached : kDetached);
  response.set("ps_attach_state", is_served ? kAttached : kDetached);
  response.set("selected_network", kNetwork3gpp);
  if (!is_served) return;

  response.set("radio_interfaces", std::vector<int64_t>{kRadioLte});
  response.set("mcc", cell.mcc);
  response.set("mnc", cell.mnc);
  response.set_text("network_description", cell.network_description);
  response.set("cell_id", cell.cell_id);
}

void get_plmn_name(Device& device, const Fields& request, Fields& response) {
  const auto& operators = device.state.operators;
  auto found = std::find_if(operators.begin(), operators.end(), [&](const Operator& entry) {
    return entry.mcc == request.number("mcc") && entry.mnc == request.number("mnc");
  });
  if (found == operators.end()) return;

  Bytes short_name = encode_gsm(found->short_name).value_or(Bytes{});
  Bytes provider = short_name;
  provider.resize(std::min(provider.size(), kServiceProviderNameSize));
  response.set("service_provider_coding", kGsmAlphabet);
  response.set("service_provider_name", provider);
  set_name(response, "short_name", short_name);
  set_name(response, "long_name", encode_gsm(found->long_name).value_or(Bytes{}));
}

void get_sig_info(Device& device, const Fields& /*request*/, Fields& response) {
  const LteCell& cell = device.state.lte;
  if (cell.service_state == kNoService) return;
  response.set("lte_rssi", cell.rssi);
  response.set("lte_rsrq", cell.rsrq);
  response.set("lte_rsrp", cell.rsrp);
  response.set("lte_snr", cell.snr);
}

void get_tx_rx_info(Device& device, const Fields& request, Fields& response) {
  const LteCell& cell = device.state.lte;
  if (cell.service_state == kNoService || request.number("radio_interface") != kRadioLte) {
    return report_failure(response, kErrorNoRadio);
  }
  set_receiver(response, "rx0", cell, 0);
  set_receiver(response, "rx1", cell, kSecondAntennaLoss);
  response.set("tx_in_traffic", cell.in_traffic);
  response.set("tx_power", cell.tx_power);
}

void write_akey(Device& device, const Fields& request, Fields& response) {
  const Bytes* spc = device.state.nv.find(kSpcItem);
  Bytes akey = request.bytes("akey");
  if (spc == nullptr || *spc != request.bytes("spc")) {
    return report_failure(response, kErrorAuthenticationFailed);
  }
  if (!std::all_of(akey.begin(), akey.end(), [](uint8_t c) { return c >= '0' && c <= '9'; })) {
    return report_failure(response, kErrorInvalidArgument);
  }
  device.state.security.akey.assign(akey.begin(), akey.end());
}

void verify_subsidy_lock(Device& device, const Fields& request, Fields& response) {
  Bytes code = request.bytes("code");
  const std::string& wanted = device.state.security.subsidy_lock_code;
  if (!std::equal(code.begin(), code.end(), wanted.begin(), wanted.end())) {
    report_failure(response, kErrorAuthenticationFailed);
  }
}

// The modem checks the old code, but not that the new one consists of digits.
void write_spc(Device& device, const Fields& request, Fields& response) {
  const Bytes* current = device.state.nv.find(kSpcItem);
  if (current == nullptr || *current != request.bytes("current_spc")) {
    return report_failure(response, kErrorAuthenticationFailed);
  }
  device.state.nv.put(kSpcItem, request.bytes("new_spc"));
}

}  // namespace modem

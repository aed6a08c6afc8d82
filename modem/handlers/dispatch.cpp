// SPDX-License-Identifier: Apache-2.0
#include "modem/handlers/dispatch.h"

#include <algorithm>
#include <iterator>

#include "modem/handlers/handlers.h"
#include "modem/messages/services.h"

namespace modem {
namespace {

using qmi_idl::Direction;
using qmi_idl::Header;
using qmi_idl::Message;
using qmi_idl::Service;

struct Row {
  const Service& (*service)();
  uint32_t message_id;
  Handler handler;
};

constexpr Row kRows[] = {
    {qorext_service, 0x08, element_read},
    {qorext_service, 0x09, element_write},
    {qorext_service, 0x0A, request_pfp},
    {qorext_service, 0x0F, serve_utils},
    {qorext_service, 0x10, get_engineering_info},
    {qorext_service, 0x11, factory_reset},
    {qorext_service, 0x13, report_hob},
    {qorext_service, 0x16, get_data_plmn},
    {qorext_service, 0x100, set_roaming_list_segment},
    {qorext_service, 0x101, read_band},
    {qorext_service, 0x102, write_band},
    {qorext_service, 0x103, switch_profile},
    {qorext_service, 0x104, get_tot_order},
    {qorext_service, 0x105, update_tot_order},
    {qorext_service, 0x106, get_active_ehrpd_apn},
    {qorext_service, 0x107, get_lte_service_state},
    {qorext_service, 0x108, get_bsr_timer},
    {qorext_service, 0x109, set_bsr_timer},
    {qorext_service, 0x10A, get_lte_channel},
    {qorext_service, 0x110, set_tuner},
    {nas_service, 0x24, get_serving_system},
    {nas_service, 0x44, get_plmn_name},
    {nas_service, 0x4F, get_sig_info},
    {nas_service, 0x5A, get_tx_rx_info},
    {nas_service, 0x5B, write_akey},
    {dms_service, 0x3B, verify_subsidy_lock},
    {dms_service, 0x52, write_spc},
};

Handler find_handler(const Service& service, uint32_t message_id) {
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& candidate) {
    return candidate.message_id == message_id && &candidate.service() == &service;
  });
  return row == std::end(kRows) ? nullptr : row->handler;
}

Bytes encode_response(const Header& header, const Message& message, const Bytes& structure) {
  return encode_packet(qmi_idl::WireType::response, header.transaction, message, structure);
}

constexpr int64_t kStatusSuccess = 0;
constexpr int64_t kStatusFailure = 1;
constexpr int64_t kOutcomeSuccess = 1;
constexpr int64_t kOutcomeFailure = 0;

void set_if_known(qmi_json::Fields& response, const char* name, int64_t value) {
  if (response.knows(name)) response.set(name, value);
}

}  // namespace

void report_success(qmi_json::Fields& response) {
  response.set_result(0, kErrorNone);
  set_if_known(response, "status", kStatusSuccess);
  set_if_known(response, "outcome", kOutcomeSuccess);
  set_if_known(response, "error", kErrorNone);
}

void report_failure(qmi_json::Fields& response, uint16_t error, uint16_t result) {
  response.set_result(result, error);
  set_if_known(response, "status", kStatusFailure);
  set_if_known(response, "outcome", kOutcomeFailure);
  set_if_known(response, "error", error);
}

Bytes respond(Device& device, const Service& service, const Header& header,
              std::span<const uint8_t> tlvs) {
  const Message* request = find(service, Direction::request, header.message_id);
  const Message* response = find(service, Direction::response, header.message_id);
  Handler handler = find_handler(service, header.message_id);
  if (request == nullptr || response == nullptr || handler == nullptr) {
    return result_packet(header.transaction, header.message_id, kResultFailure, kErrorNotSupported);
  }

  Bytes asked(request->size);
  if (!decode(*request, tlvs, asked)) {
    return result_packet(header.transaction, header.message_id, kResultFailure, kErrorMalformed);
  }

  Bytes answered(response->size);
  qmi_json::Fields answer(*response, answered);
  report_success(answer);
  handler(device, qmi_json::Fields(*request, asked), answer);
  return encode_response(header, *response, answered);
}

Bytes refuse(const Service& service, const Header& header, uint16_t result, uint16_t error) {
  const Message* response = find(service, Direction::response, header.message_id);
  if (response == nullptr) {
    return result_packet(header.transaction, header.message_id, result, error);
  }
  Bytes answered(response->size);
  qmi_json::Fields answer(*response, answered);
  report_failure(answer, error, result);
  return encode_response(header, *response, answered);
}

}  // namespace modem

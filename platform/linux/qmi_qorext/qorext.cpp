// SPDX-License-Identifier: Apache-2.0
// The vendor service's messages. The modem uses three conventions for the beginning of a response:
// the QMI result record (TLV 0x02, 0 is success), a u32 `status` (0 is success), and a u32
// `outcome` followed by a u32 `error` (1 is success). Values of unknown meaning have neutral names;
// those that the daemon does not read are `unused`.
#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_idl/interface_versions.h"
#include "qorext_vendor_service_v01.h"

#include <array>

namespace {

using namespace qmi_idl;

constexpr Element kElementRequest[] = {
    {0x01, kNoOffset, "rde_id", u32(0)},
    {0x01, kNoOffset, "record", u32(4)},
    {0x01, kNoOffset, "offset", u32(8)},
    {0x01, kNoOffset, "length", u32(12)},
    {0x02, kNoOffset, "data", array(count16_u32(16), u8(20), 512)},
};

constexpr Element kElementReadResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x01, kNoOffset, "rde_id", u32(8)},
    {0x01, kNoOffset, "record", u32(12)},
    {0x01, kNoOffset, "offset", u32(16)},
    {0x01, kNoOffset, "length", u32(20)},
    {0x03, kNoOffset, "data", array(count16_u32(24), u8(28), 512)},
};

constexpr Element kResultOnly[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
};

constexpr Element kPfpRequest[] = {
    {0x01, kNoOffset, "value", u32(0)},
};

constexpr Element kPfpResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x01, kNoOffset, "unused", u32(8)},
};

constexpr Element kPfpIndication[] = {
    {0x01, kNoOffset, "first_value", u16(0)},
    {0x01, kNoOffset, "rat", u16(2)},
    {0x01, kNoOffset, "tbl_idx", u32(4)},
    {0x02, kNoOffset, "remaining_bytes", bytes(8, 224)},
};

constexpr Element kUtilsRequest[] = {
    {0x01, kNoOffset, "type", u32(0)},
    {0x02, kNoOffset, "data", array(count16_u32(4), u8(8), 256)},
};

constexpr Element kUtilsResponse[] = {
    {0x01, kNoOffset, "unused", u32(0)},
    {0x03, kNoOffset, "data", array(count16_u32(4), u8(8), 512)},
};

constexpr Element kUtilsIndication[] = {
    {0x01, kNoOffset, "type", u32(0)},
    {0x02, kNoOffset, "data", array(count16_u32(4), u8(8), 512)},
};

constexpr Element kEngineeringInfoRequest[] = {
    {0x01, kNoOffset, "type", u32(0)},
};

constexpr Element kEngineeringInfoResponse[] = {
    {0x01, kNoOffset, "status", u32(0)},
    {0x01, kNoOffset, "unused", u32(4)},
    {0x03, kNoOffset, "data", array(count16_u32(8), u8(12), 1000)},
};

constexpr Element kFactoryResetRequest[] = {
    {0x01, kNoOffset, "mode", u8(0)},
};

constexpr Element kFactoryResetResponse[] = {
    {0x01, kNoOffset, "outcome", u8(0)},
};

constexpr Element kHobRequest[] = {
    {0x01, kNoOffset, "state", u8(0)},
};

constexpr Element kHobResponse[] = {
    {0x01, kNoOffset, "unused", u8(0)},
};

constexpr Element kDataPlmnRequest[] = {
    {0x01, kNoOffset, "unused", u32(0)},
};

constexpr Element kDataPlmnResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x01, kNoOffset, "record", bytes(8, 560)},
};

constexpr Element kRoamingListRequest[] = {
    {0x01, kNoOffset, "segment", array(count16_u32(0), u8(4), 16384)},
};

constexpr Element kStatusOnly[] = {
    {0x01, kNoOffset, "status", u32(0)},
};

constexpr Element kReadBandRequest[] = {
    {0x01, kNoOffset, "selector", u32(0)},
};

constexpr Element kReadBandResponse[] = {
    {0x01, kNoOffset, "status", u32(0)},
    {0x01, kNoOffset, "band", u32(4)},
};

constexpr Element kWriteBandRequest[] = {
    {0x01, kNoOffset, "selector", u32(0)},
    {0x01, kNoOffset, "band", u32(4)},
};

constexpr Element kSwitchProfileRequest[] = {
    {0x01, kNoOffset, "profile", u32(0)},
};

constexpr uint16_t kTotOrderEntries = 15;

constexpr Element kGetTotOrderResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x10, 8, "entries", array(count8_u16(12), u32(20), kTotOrderEntries)},
};

constexpr Element kUpdateTotOrderRequest[] = {
    {0x01, kNoOffset, "entries", array(count8_u16(0), u32(8), kTotOrderEntries)},
};

constexpr Element kOutcomeOnly[] = {
    {0x01, kNoOffset, "outcome", u32(0)},
    {0x01, kNoOffset, "error", u32(4)},
};

constexpr size_t kApnEntries = 8;
constexpr size_t kApnElements = 5;

// One TLV for each entry, from 0x10. The structure's entries are 144 bytes apart.
constexpr auto active_ehrpd_apn_response() {
  std::array<Element, 3 + kApnEntries * kApnElements> elements{};
  elements[0] = {kResultTlv, kNoOffset, "result", result(0)};
  elements[1] = {0x01, kNoOffset, "count", u8(8)};
  elements[2] = {0x01, kNoOffset, "count_high", u8(9)};
  for (size_t i = 0; i < kApnEntries; ++i) {
    auto tlv = static_cast<uint8_t>(0x10 + i);
    auto at = static_cast<uint16_t>(16 + i * 144);
    auto offset = [at](int inside) { return static_cast<uint16_t>(at + inside); };
    Element* entry = &elements[3 + i * kApnElements];
    entry[0] = {tlv, kNoOffset, "first_value", u32(offset(0))};
    entry[1] = {tlv, kNoOffset, "second_value", u32(offset(4))};
    entry[2] = {tlv, kNoOffset, "unused", bytes(offset(8), 12)};
    entry[3] = {tlv, kNoOffset, "name", bytes(offset(20), 103)};
    entry[4] = {tlv, kNoOffset, "remaining_bytes", bytes(offset(128), 16)};
  }
  return elements;
}
constexpr auto kActiveEhrpdApnResponse = active_ehrpd_apn_response();

constexpr Element kLteServiceStateResponse[] = {
    {0x01, kNoOffset, "outcome", u32(0)},
    {0x01, kNoOffset, "error", u32(4)},
    {0x01, kNoOffset, "state", u8(8)},
};

constexpr Element kGetBsrTimerResponse[] = {
    {0x01, kNoOffset, "outcome", u32(0)},
    {0x01, kNoOffset, "error", u32(4)},
    {0x01, kNoOffset, "timer", u32(8)},
};

constexpr Element kSetBsrTimerRequest[] = {
    {0x01, kNoOffset, "timer", u32(0)},
};

constexpr Element kLteChannelResponse[] = {
    {0x01, kNoOffset, "outcome", u32(0)},
    {0x01, kNoOffset, "error", u32(4)},
    // Each value has its own TLV: the modem omits those it does not know.
    {0x10, 8, "second_channel", u16(10)},
    {0x11, 12, "first_channel", u16(14)},
    {0x12, 16, "third_value", u8(17)},
    {0x13, 18, "fourth_value", u8(19)},
};

constexpr Element kTunerMessage[] = {
    {0x01, kNoOffset, "data", array(count8_u32(0), u8(4), 28)},
};

constexpr Element kCarrierEventIndication[] = {
    {0x01, kNoOffset, "value", u16(0)},
};

constexpr Element kLteErrorIndication[] = {
    {0x01, kNoOffset, "first_value", u32(0)},
    {0x01, kNoOffset, "second_value", u8(4)},
    {0x01, kNoOffset, "third_value", u32(8)},
    {0x02, kNoOffset, "text", bytes(12, 103)},
};

constexpr Element kCoverageIndication[] = {
    {0x01, kNoOffset, "report", bytes(0, 32)},
};

constexpr Message kMessages[] = {
    {0x08, Direction::request, "element_read", 532, kElementRequest},
    {0x08, Direction::response, "element_read", 540, kElementReadResponse},
    {0x09, Direction::request, "element_write", 532, kElementRequest},
    {0x09, Direction::response, "element_write", 8, kResultOnly},
    {0x0A, Direction::request, "pfp", 4, kPfpRequest},
    {0x0A, Direction::response, "pfp", 12, kPfpResponse},
    {0x0F, Direction::request, "utils", 264, kUtilsRequest},
    {0x0F, Direction::response, "utils", 520, kUtilsResponse},
    {0x10, Direction::request, "engineering_info", 4, kEngineeringInfoRequest},
    {0x10, Direction::response, "engineering_info", 1012, kEngineeringInfoResponse},
    {0x11, Direction::request, "factory_reset", 1, kFactoryResetRequest},
    {0x11, Direction::response, "factory_reset", 1, kFactoryResetResponse},
    {0x13, Direction::request, "hob", 1, kHobRequest},
    {0x13, Direction::response, "hob", 1, kHobResponse},
    {0x16, Direction::request, "data_plmn", 4, kDataPlmnRequest},
    {0x16, Direction::response, "data_plmn", 568, kDataPlmnResponse},
    {0x100, Direction::request, "set_roaming_list_segment", 16388, kRoamingListRequest},
    {0x100, Direction::response, "set_roaming_list_segment", 4, kStatusOnly},
    {0x101, Direction::request, "read_band", 4, kReadBandRequest},
    {0x101, Direction::response, "read_band", 8, kReadBandResponse},
    {0x102, Direction::request, "write_band", 8, kWriteBandRequest},
    {0x102, Direction::response, "write_band", 4, kStatusOnly},
    {0x103, Direction::request, "switch_profile", 4, kSwitchProfileRequest},
    {0x103, Direction::response, "switch_profile", 4, kStatusOnly},
    {0x104, Direction::request, "get_tot_order", 0, {}},
    {0x104, Direction::response, "get_tot_order", 80, kGetTotOrderResponse},
    {0x105, Direction::request, "update_tot_order", 68, kUpdateTotOrderRequest},
    {0x105, Direction::response, "update_tot_order", 8, kOutcomeOnly},
    {0x106, Direction::request, "get_active_ehrpd_apn", 0, {}},
    {0x106, Direction::response, "get_active_ehrpd_apn", 1168, kActiveEhrpdApnResponse},
    {0x107, Direction::request, "get_lte_service_state", 0, {}},
    {0x107, Direction::response, "get_lte_service_state", 12, kLteServiceStateResponse},
    {0x108, Direction::request, "get_bsr_timer", 0, {}},
    {0x108, Direction::response, "get_bsr_timer", 12, kGetBsrTimerResponse},
    {0x109, Direction::request, "set_bsr_timer", 4, kSetBsrTimerRequest},
    {0x109, Direction::response, "set_bsr_timer", 8, kOutcomeOnly},
    {0x10A, Direction::request, "get_lte_channel", 0, {}},
    {0x10A, Direction::response, "get_lte_channel", 20, kLteChannelResponse},
    {0x110, Direction::request, "tuner", 32, kTunerMessage},
    {0x110, Direction::response, "tuner", 32, kTunerMessage},
    {0x01, Direction::indication, "notify", 0, {}},
    {0x0A, Direction::indication, "pfp", 232, kPfpIndication},
    {0x0F, Direction::indication, "utils", 520, kUtilsIndication},
    {0x12, Direction::indication, "carrier_event", 2, kCarrierEventIndication},
    {0x13, Direction::indication, "hob_save", 0, {}},
    {0x16, Direction::indication, "generic", 0, {}},
    {0x10B, Direction::indication, "lte_error", 116, kLteErrorIndication},
    {0x10C, Direction::indication, "coverage", 32, kCoverageIndication},
};

constexpr Service kQorext = {"qorext", 0xE7, 1, kMessages};
static_assert(is_consistent(kQorext));

}  // namespace

extern "C" qmi_idl_service_object_type qorext_vs_get_service_object_internal_v01(
    int32_t idl_major_version, int32_t idl_minor_version, int32_t tool_version) {
  qmi_idl::InterfaceVersion version = {idl_major_version, idl_minor_version, tool_version};
  if (version != qmi_idl::kQorextInterface) return nullptr;
  return const_cast<Service*>(&kQorext);
}

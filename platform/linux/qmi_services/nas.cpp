// SPDX-License-Identifier: Apache-2.0
#include "network_access_service_v01.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_idl/interface_versions.h"

namespace {

using namespace qmi_idl;

constexpr Element kGetServingSystemResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x01, kNoOffset, "registration_state", enum8(8)},
    {0x01, kNoOffset, "cs_attach_state", enum8(12)},
    {0x01, kNoOffset, "ps_attach_state", enum8(16)},
    {0x01, kNoOffset, "selected_network", enum8(20)},
    {0x01, kNoOffset, "radio_interfaces", array(count8_u32(24), signed_enum8(28), 255)},
    {0x12, 1104, "mcc", u16(1106)},
    {0x12, 1104, "mnc", u16(1108)},
    {0x12, 1104, "network_description", text8(1110, 255)},
    {0x1D, 1434, "cell_id", u32(1436)},
};

constexpr Element kGetPlmnNameRequest[] = {
    {0x01, kNoOffset, "mcc", u16(0)},
    {0x01, kNoOffset, "mnc", u16(2)},
    {0x10, 4, "suppress_sim_error", u8(5)},
    {0x13, 10, "use_static_table_only", u8(11)},
};

constexpr Element kGetPlmnNameResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x10, 8, "service_provider_coding", enum8(12)},
    {0x10, 8, "service_provider_name", array(count8_u32(16), u8(20), 16)},
    {0x10, 8, "short_name_coding", enum8(36)},
    {0x10, 8, "short_name_country_initials", enum8(40)},
    {0x10, 8, "short_name_spare_bits", enum8(44)},
    {0x10, 8, "short_name", array(count8_u32(48), u8(52), 64)},
    {0x10, 8, "long_name_coding", enum8(116)},
    {0x10, 8, "long_name_country_initials", enum8(120)},
    {0x10, 8, "long_name_spare_bits", enum8(124)},
    {0x10, 8, "long_name", array(count8_u32(128), u8(132), 64)},
};

constexpr Element kGetSigInfoResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x14, 36, "lte_rssi", i8(38)},
    {0x14, 36, "lte_rsrq", i8(39)},
    {0x14, 36, "lte_rsrp", i16(40)},
    {0x14, 36, "lte_snr", i16(42)},
};

constexpr Element kGetTxRxInfoRequest[] = {
    {0x01, kNoOffset, "radio_interface", signed_enum8(0)},
};

constexpr Element kGetTxRxInfoResponse[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
    {0x10, 8, "rx0_tuned", u8(12)},
    {0x10, 8, "rx0_power", i32(16)},
    {0x10, 8, "rx0_ecio", i32(20)},
    {0x10, 8, "rx0_rscp", i32(24)},
    {0x10, 8, "rx0_rsrp", i32(28)},
    {0x10, 8, "rx0_phase", u32(32)},
    {0x11, 36, "rx1_tuned", u8(40)},
    {0x11, 36, "rx1_power", i32(44)},
    {0x11, 36, "rx1_ecio", i32(48)},
    {0x11, 36, "rx1_rscp", i32(52)},
    {0x11, 36, "rx1_rsrp", i32(56)},
    {0x11, 36, "rx1_phase", u32(60)},
    {0x12, 64, "tx_in_traffic", u8(68)},
    {0x12, 64, "tx_power", i32(72)},
};

constexpr Element kWriteAkeyRequest[] = {
    {0x01, kNoOffset, "spc", bytes(0, 6)},
    {0x02, kNoOffset, "akey", bytes(6, 26)},
};

constexpr Element kResultOnly[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
};

constexpr Message kMessages[] = {
    {0x24, Direction::request, "get_serving_system", 0, {}},
    {0x24, Direction::response, "get_serving_system", 1508, kGetServingSystemResponse},
    {0x44, Direction::request, "get_plmn_name", 32, kGetPlmnNameRequest},
    {0x44, Direction::response, "get_plmn_name", 3944, kGetPlmnNameResponse},
    {0x4F, Direction::request, "get_sig_info", 0, {}},
    {0x4F, Direction::response, "get_sig_info", 64, kGetSigInfoResponse},
    {0x5A, Direction::request, "get_tx_rx_info", 4, kGetTxRxInfoRequest},
    {0x5A, Direction::response, "get_tx_rx_info", 164, kGetTxRxInfoResponse},
    {0x5B, Direction::request, "write_akey", 32, kWriteAkeyRequest},
    {0x5B, Direction::response, "write_akey", 8, kResultOnly},
};

constexpr Service kNas = {"nas", 3, 1, kMessages};
static_assert(is_consistent(kNas));

}  // namespace

extern "C" qmi_idl_service_object_type nas_get_service_object_internal_v01(
    int32_t idl_major_version, int32_t idl_minor_version, int32_t tool_version) {
  qmi_idl::InterfaceVersion version = {idl_major_version, idl_minor_version, tool_version};
  if (version != qmi_idl::kNasInterface) return nullptr;
  return const_cast<Service*>(&kNas);
}

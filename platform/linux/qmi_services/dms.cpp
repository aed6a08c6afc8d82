// SPDX-License-Identifier: Apache-2.0
#include "device_management_service_v01.h"
#include "platform/linux/qmi_idl/descriptor.h"
#include "platform/linux/qmi_idl/interface_versions.h"

namespace {

using namespace qmi_idl;

constexpr Element kVerifySubsidyLockRequest[] = {
    {0x01, kNoOffset, "code", bytes(0, 6)},
};

constexpr Element kWriteSpcRequest[] = {
    {0x01, kNoOffset, "current_spc", bytes(0, 6)},
    {0x02, kNoOffset, "new_spc", bytes(6, 6)},
};

constexpr Element kResultOnly[] = {
    {kResultTlv, kNoOffset, "result", result(0)},
};

constexpr Message kMessages[] = {
    {0x3B, Direction::request, "verify_subsidy_lock", 6, kVerifySubsidyLockRequest},
    {0x3B, Direction::response, "verify_subsidy_lock", 8, kResultOnly},
    {0x52, Direction::request, "write_spc", 12, kWriteSpcRequest},
    {0x52, Direction::response, "write_spc", 8, kResultOnly},
};

constexpr Service kDms = {"dms", 2, 1, kMessages};
static_assert(is_consistent(kDms));

}  // namespace

extern "C" qmi_idl_service_object_type dms_get_service_object_internal_v01(
    int32_t idl_major_version, int32_t idl_minor_version, int32_t tool_version) {
  qmi_idl::InterfaceVersion version = {idl_major_version, idl_minor_version, tool_version};
  if (version != qmi_idl::kDmsInterface) return nullptr;
  return const_cast<Service*>(&kDms);
}

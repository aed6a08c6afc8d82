// SPDX-License-Identifier: Apache-2.0
#include "src/features/feature_indications.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"

namespace {

constexpr uint32_t kReportSize = 32;
constexpr uint32_t kCoverageMessage = 0x04000301;

}  // namespace

int sigcovIndHndlr(qmi_client_type client, unsigned int indication_id, void* buffer,
                   unsigned int length, void*) {
  uint8_t report[kReportSize] = {};
  if (qmi_client_message_decode(client, QMI_IDL_INDICATION, indication_id, buffer, length, report,
                                sizeof report) != QMI_NO_ERR) {
    LOGE("sigcovIndHndlr: failed to decode ind data");
    return 0;
  }
  Frame frame = unsolicited_generic(kCoverageMessage, kReportSize);
  if (!frame) return 0;
  memcpy(frame.at(kUnsolGenericData), report, kReportSize);
  writeUnsolToParent(frame);
  return 0;
}

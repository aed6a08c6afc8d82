// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include <string.h>

#include "src/host/base/bytes.h"
#include "src/host/base/log.h"
#include "src/vendor/rde_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

ElementRequest element_at(int32_t index, int32_t record, int32_t offset) {
  ElementRequest element = {};
  element.rde_id = static_cast<uint32_t>(index);
  element.record = static_cast<uint32_t>(record);
  element.offset = static_cast<uint32_t>(offset);
  return element;
}

}  // namespace

uint32_t qor_qmi_sprint_rde_write(int32_t index, int32_t record, int32_t offset, uint32_t length,
                                  const void* data) {
  LOGE("NV Write with RDE index %d, record number %d, offset %d.", index, record, offset);
  if (length > kElementDataSize) {
    LOGE("Data more than buffer size %d", length);
    return kRdeFailure;
  }

  ElementRequest element = element_at(index, record, offset);
  ElementWriteResponse response = {};
  set_data(element, data, length);
  LOGE("qor_qmi_sprint_rde_write: hexdump len %d...", length);
  hexDump(data, length);

  int rc = qorext_exchange(kElementWrite, element, response);
  if (rc != 0 || response.result != 0) {
    LOGE("NV Write fail - %d, result - %d, error - %d", rc, response.result, response.error);
    return kRdeFailure;
  }
  LOGE("NV Write success for element %u", index);
  return kRdeSuccess;
}

uint32_t qor_qmi_sprint_rde_read(int32_t index, int32_t record, int32_t offset, void* output,
                                 uint32_t max_length, uint32_t* length) {
  LOGE("NV Read with RDE index (%d), recordNum(%d), offset(%d).", index, record, offset);
  ElementRequest element = element_at(index, record, offset);
  ElementReadResponse response = {};
  int rc = qorext_exchange(kElementRead, element, response);
  if (rc != 0 || response.result != 0) {
    LOGE("NV Read fail - %d, result - %d, error - %d", rc, response.result, response.error);
    return kRdeFailure;
  }

  // The log shows the lengths as the modem states them; the text and the copy use the valid bytes.
  uint32_t available = valid_length(response);
  char text[2 * kElementDataSize + 1];
  toHexString(available, response.data, text);
  LOGE("NV Read %u, length %u, data length %u, grde - %s", response.rde_id, response.length,
       response.data_length, text);

  // The stated length decides, not the valid one: an item that claims too much is not copied at
  // all.
  if (output == nullptr || response.length > max_length) {
    LOGE("Input buffer is NULL or too small! max_len(%d).", max_length);
    return kRdeSuccess;
  }
  memcpy(output, response.data, available);
  if (length != nullptr) *length = available;
  return kRdeSuccess;
}

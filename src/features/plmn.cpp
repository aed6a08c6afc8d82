// SPDX-License-Identifier: Apache-2.0
// The data PLMN record and the operator name of a PLMN.
#include <algorithm>

#include "src/carrier_modem/carrier_clients.h"
#include "src/features/features.h"
#include "src/features/gsm_alphabet.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr unsigned int QMI_DATA_PLMN_REQ_V01 = 0x16;

struct DataPlmnRequest {
  uint32_t unused;
};
static_assert(sizeof(DataPlmnRequest) == 4);

struct DataPlmnResponse {
  uint8_t record[568];
};
static_assert(sizeof(DataPlmnResponse) == 568);

// The payload of an operator name request, little-endian unlike its header.
struct PlmnId {
  uint16_t mcc;
  uint16_t mnc;
};
static_assert(sizeof(PlmnId) == 4);

constexpr unsigned int GET_PLMN_NAME_REQ_MSG_V01 = 0x44;
constexpr uint32_t kGsmDefaultAlphabet = 0;
constexpr size_t kMaxNameInReply = 512;

// Each optional value follows its validity byte.
struct PlmnNameRequest {
  uint16_t mcc;
  uint16_t mnc;
  uint8_t suppress_sim_error_valid;
  uint8_t suppress_sim_error;
  uint8_t unused_at_6[4];
  uint8_t static_table_only_valid;
  uint8_t static_table_only;
  uint8_t unused_at_12[20];
};
static_assert(sizeof(PlmnNameRequest) == 32);
static_assert(offsetof(PlmnNameRequest, suppress_sim_error) == 5);
static_assert(offsetof(PlmnNameRequest, static_table_only_valid) == 10);

struct PlmnNameResponse {
  uint32_t result;
  uint32_t error;
  uint8_t eons_name_valid;
  uint8_t unused_at_9[27];
  uint32_t short_name_coding;
  uint8_t unused_at_40[8];
  uint32_t short_name_length;
  uint8_t short_name[3892];  // with all that follows it: the length may reach that far
};
static_assert(sizeof(PlmnNameResponse) == 3944);
static_assert(offsetof(PlmnNameResponse, short_name_coding) == 36);
static_assert(offsetof(PlmnNameResponse, short_name_length) == 48);
static_assert(offsetof(PlmnNameResponse, short_name) == 52);

int request_name(const uint8_t* request, PlmnNameResponse& response) {
  auto plmn = load<PlmnId>(request + kGenericPayload);
  PlmnNameRequest message = {};
  message.mcc = plmn.mcc;
  message.mnc = plmn.mnc;
  message.suppress_sim_error_valid = 1;
  message.suppress_sim_error = 1;
  message.static_table_only_valid = 1;
  message.static_table_only = 1;
  LOGE("Received request len = %d, mcc = %d, mnc = %d", generic_length(request), message.mcc,
       message.mnc);
  int rc = nas_exchange(GET_PLMN_NAME_REQ_MSG_V01, message, response);
  // Logged also after a failed send; the result itself is not checked.
  LOGE("Response = %d, Error code = %d", response.result, response.error);
  LOGE("EONS plmn name valid = %d", response.eons_name_valid);
  return rc;
}

using NameText = char[utf8_limit(sizeof PlmnNameResponse::short_name) + 1];

size_t convert_name(const PlmnNameResponse& response, NameText& name) {
  auto stated = static_cast<uint16_t>(response.short_name_length);  // its low 16 bits only
  auto length = std::min<uint16_t>(stated, sizeof response.short_name);
  size_t size = gsm_to_utf8(response.short_name, length, name);
  if (size == 0) {
    LOGE("Invalid or Empty string received from modem");
  } else {
    LOGE("plmn short name is 7-bit Unpacked data %s", name);
  }
  return size;
}

// Returns the number of bytes of the name, 0 when the modem sent none.
size_t extract_name(int rc, const PlmnNameResponse& response, NameText& name) {
  if (rc != 0) {
    LOGE("Sending GET_PLMN_NAME_REQ_MSG_V01 failed!");
    return 0;
  }
  LOGE("Dumping modem response for GET_PLMN_NAME_REQ_MSG_V01...");
  // Longer than a dump may be: logs the overflow line.
  hexDump(&response, sizeof response);
  if (response.eons_name_valid != 1 || response.short_name_coding != kGsmDefaultAlphabet) {
    LOGE(" plmn_resp.eons_plmn_name_3gpp_valid is FALSE!");
    return 0;
  }
  return convert_name(response, name);
}

}  // namespace

int handleDataPlmn(const uint8_t*, uint32_t) {
  DataPlmnRequest request = {};
  DataPlmnResponse response = {};
  int rc = qorext_exchange(QMI_DATA_PLMN_REQ_V01, request, response);
  if (rc == 0) {
    LOGE("Dumping modem response for QMI_DATA_PLMN_REQ_V01...");
    hexDump(response.record, sizeof response.record);
  } else {
    LOGE("Sending QMI_DATA_PLMN_REQ_V01 failed!");
    response = {};  // the reply has no header: a record of zeros reports the failure
  }
  writeToParent(response.record, sizeof response.record);
  return rc;
}

int handleOperatorName(const uint8_t* request, uint32_t) {
  PlmnNameResponse response = {};
  int rc = request_name(request, response);
  NameText name;
  size_t size = extract_name(rc, response, name);

  LOGE("Sending OnRequest Complete");
  if (size == 0) {
    send_generic_status(request, kStatusFailure);
  } else {
    send_generic_reply(request, name, static_cast<uint32_t>(std::min(size, kMaxNameInReply)));
  }
  return rc;
}

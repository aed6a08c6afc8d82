// SPDX-License-Identifier: Apache-2.0
// The carrier's CDMA and LTE provisioning requests. Every CDMA-hook request is offered here first.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/host/base/framing.h"

constexpr uint32_t kCarrierServed = 0;
constexpr uint32_t kCarrierDeclined = 0xFFFFFFFF;

// Returns kCarrierServed when the request has been replied to here (or is null), else
// kCarrierDeclined. The argument is not used.
uint32_t qorext_hook_sprint_handler(uint8_t* request, uint32_t argument);

// Writes the first 20 bytes of `header` (its length field is the data's length L), the data from
// byte 18 when there is any, and zeros up to L + 20 bytes. Returns 1 when the frame was passed to
// the reply pipe, 0 when the header is null or there is no memory.
uint32_t qorext_hook_sprint_send_response(const uint8_t* header, const uint8_t* data);

constexpr uint32_t kStatusModemRefused = 2;
constexpr uint32_t kStatusSubsidyLockRefused = 3;

// The reply status for a modem operation's own: 0 is success, 5 a refusal, the rest failures.
constexpr uint32_t status_from_modem(uint32_t result) {
  if (result == 0) return kStatusSuccess;
  return result == 5 ? kStatusModemRefused : kStatusFailure;
}

constexpr uint32_t kMaxCarrierData = 1044;  // a general item read of 1024 bytes

// The data of an operation's reply.
struct CarrierReply {
  uint32_t length = 0;
  uint8_t data[kMaxCarrierData] = {};
};

inline void put_bytes(CarrierReply& reply, const void* bytes, uint32_t size) {
  memcpy(reply.data + reply.length, bytes, size);
  reply.length += size;
}

inline void put_le32(CarrierReply& reply, uint32_t value) {
  put_bytes(reply, &value, sizeof value);
}

// The operations of the carrier handler's tables. Each takes the whole request buffer, fills the
// reply's data (left empty for a reply without data) and returns the reply's status.
using CarrierOperation = uint32_t(const uint8_t* request, CarrierReply& reply);

// settings.cpp: values that the modem keeps.
CarrierOperation get_bc10_status;
CarrierOperation set_bc10_status;
CarrierOperation get_bc14_status;
CarrierOperation set_bc14_status;
CarrierOperation set_roaming_list_segment;
CarrierOperation set_active_profile;
CarrierOperation factory_reset;
CarrierOperation get_ddtm_preference;
CarrierOperation set_ddtm_preference;
CarrierOperation get_bsr_timer;
CarrierOperation set_bsr_timer;
CarrierOperation get_lte_option;
CarrierOperation set_lte_option;
CarrierOperation refuse_obsolete;

// network_data.cpp: records that the modem reports.
CarrierOperation get_lte_data;
CarrierOperation get_active_ehrpd_apn;
CarrierOperation get_tot_order;
CarrierOperation update_tot_order;

// items.cpp: NV items and access codes.
CarrierOperation get_mob_p_rev;
CarrierOperation verify_subsidy_lock_code;
CarrierOperation write_akey;
CarrierOperation rde_write;
CarrierOperation rde_read;

// nam.cpp, nam_read.cpp, nam_write.cpp: the number assignment module.
CarrierOperation get_sid_nid_pairs;
CarrierOperation set_sid_nid_pairs;
CarrierOperation get_nam_info;
CarrierOperation set_nam_info;

// call_processing.cpp, evdo.cpp: live engineering data.
CarrierOperation get_call_processing_data;
CarrierOperation get_evdo_data;

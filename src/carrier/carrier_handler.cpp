// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/carrier_handler.h"

#include "src/host/base/log.h"
#include "src/host/base/parent.h"

namespace {

enum Payload { kAnyPayload, kNonEmpty };  // kNonEmpty: a request without payload is declined

// The header of the reply: the request's own, or a new one with this id.
struct ReplyHeader {
  bool is_local;
  uint32_t id;
};
constexpr ReplyHeader kRequestHeader = {false, 0};
constexpr ReplyHeader local(uint32_t id) { return {true, id}; }

// What the handler returns once the reply is sent. After kDeclined the parent gets a second reply,
// "not supported". This is deliberate.
enum Outcome { kServed, kDeclined };

// One request: its first log lines, the check of its payload, its operation and its reply, which
// are executed in this order.
struct CarrierRow {
  uint32_t id;
  void (*log_entry)(uint32_t id);
  Payload payload;
  CarrierOperation* operation;
  ReplyHeader header;
  Outcome outcome;
};

void log_nothing(uint32_t) {}

void log_get(uint32_t id) {
  LOGE("qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE %d ", id);
  LOGE("qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE %d ", id);
}

void log_set(uint32_t id) {
  LOGE("qorext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE %d ", id);
}

void log_obsolete(uint32_t id) { LOGD("qorext_hook_sprint_handler: Obsolete MSG ID: %d", id); }

constexpr CarrierRow kProvisioningTable[] = {
  // The reply to a BC14 query carries the id of the BC10 query. This is deliberate.
    {0x020000B0, log_get,      kAnyPayload, get_bc10_status,          local(0x020000B0), kServed  },
    {0x020000B1, log_set,      kNonEmpty,   set_bc10_status,          kRequestHeader,    kServed  },
    {0x020000B2, log_get,      kAnyPayload, get_bc14_status,          local(0x020000B0), kServed  },
    {0x020000B3, log_set,      kNonEmpty,   set_bc14_status,          kRequestHeader,    kServed  },
    {0x020000B4, log_set,      kNonEmpty,   set_roaming_list_segment, kRequestHeader,    kServed  },
    {0x020000B5, log_set,      kNonEmpty,   set_active_profile,       kRequestHeader,    kDeclined},
    {0x020000B6, log_nothing,  kAnyPayload, factory_reset,            kRequestHeader,    kServed  },
    {0x020000B7, log_nothing,  kAnyPayload, get_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000B8, log_nothing,  kAnyPayload, set_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000B9, log_nothing,  kAnyPayload, get_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000BA, log_nothing,  kAnyPayload, set_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000BB, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000BC, log_nothing,  kAnyPayload, get_bsr_timer,            kRequestHeader,    kServed  },
    {0x020000BD, log_nothing,  kAnyPayload, set_bsr_timer,            kRequestHeader,    kServed  },
    {0x020000BE, log_nothing,  kAnyPayload, get_lte_option,           kRequestHeader,    kServed  },
    {0x020000BF, log_nothing,  kAnyPayload, set_lte_option,           kRequestHeader,    kServed  },
    {0x020000C0, log_nothing,  kAnyPayload, get_lte_data,             kRequestHeader,    kServed  },
    {0x020000C1, log_nothing,  kAnyPayload, get_active_ehrpd_apn,     kRequestHeader,    kServed  },
    {0x020000C2, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C3, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C4, log_nothing,  kAnyPayload, get_tot_order,            kRequestHeader,    kServed  },
    {0x020000C5, log_nothing,  kAnyPayload, update_tot_order,         kRequestHeader,    kServed  },
    {0x020000C6, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C7, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C8, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C9, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000CA, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000CB, log_obsolete, kAnyPayload, refuse_obsolete,          kRequestHeader,    kServed  },
};

constexpr CarrierRow kProgrammingTable[] = {
    {0x02000001, log_get,     kAnyPayload, get_nam_info,             local(0x02000001), kServed  },
    {0x02000002, log_nothing, kNonEmpty,   set_nam_info,             kRequestHeader,    kServed  },
    {0x02000003, log_get,     kAnyPayload, get_sid_nid_pairs,        local(0x02000003), kServed  },
    {0x02000004, log_nothing, kNonEmpty,   set_sid_nid_pairs,        kRequestHeader,    kServed  },
    {0x02000007, log_get,     kAnyPayload, get_mob_p_rev,            local(0x02000007), kServed  },
    {0x0200000A, log_nothing, kAnyPayload, verify_subsidy_lock_code, local(0x0200000A), kServed  },
    {0x02000011, log_nothing, kAnyPayload, get_call_processing_data, local(0x02000011), kServed  },
    {0x02000012, log_nothing, kAnyPayload, get_evdo_data,            local(0x02000012), kServed  },
    {0x02000013, log_nothing, kAnyPayload, write_akey,               kRequestHeader,    kDeclined},
    {0x02000015, log_nothing, kAnyPayload, rde_write,                local(0x02000015), kServed  },
    {0x02000016, log_nothing, kAnyPayload, rde_read,                 local(0x02000016), kServed  },
};

const CarrierRow* find_row(uint32_t id) {
  for (const CarrierRow& row : kProvisioningTable) {
    if (row.id == id) return &row;
  }
  for (const CarrierRow& row : kProgrammingTable) {
    if (row.id == id) return &row;
  }
  return nullptr;
}

// In a reply with the request's own header, all but length and status stays as it was received.
uint32_t send_reply(const CarrierRow& row, uint8_t* request, uint32_t status,
                    const CarrierReply& reply) {
  uint8_t fresh[kCdmaReplySize] = {};  // no code: a local header carries none
  store_le32(fresh + kCdmaId, row.header.id);

  uint8_t* header = row.header.is_local ? fresh : request;
  store_le32(header + kCdmaLength, reply.length);
  store_le32(header + kCdmaStatus, status);
  return qorext_hook_sprint_send_response(header, reply.length > 0 ? reply.data : nullptr);
}

}  // namespace

uint32_t qorext_hook_sprint_send_response(const uint8_t* header, const uint8_t* data) {
  if (header == nullptr) return 0;
  uint32_t id = cdma_id(header);
  auto length = static_cast<int32_t>(cdma_length(header));

  LOGE("qorext_hook_sprint_send_response: ENTER FUNCTION %d ", id);
  Frame frame(cdma_length(header) + kCdmaReplySize);
  if (!frame) return 0;
  LOGE("qorext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Message ID %d ", id);
  LOGE("qorext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Length %d ", length);

  // The header counts as a structure of 20 bytes whose last two are padding, while the data begins
  // at 18: without data, bytes 18 and 19 of the header go out. This is deliberate.
  memcpy(frame.at(0), header, kCdmaReplySize);
  if (data != nullptr && length >= 1) {
    memset(frame.at(kCdmaPayload), 0, frame.size() - kCdmaPayload);
    memcpy(frame.at(kCdmaPayload), data, static_cast<size_t>(length));
    LOGE("qorext_hook_sprint_send_response: BYTE ARRAY NOT NULL ");
  }
  LOGE("qorext_hook_sprint_send_response: HEADER ID %d ", id);
  writeToParent(frame.data(), frame.size());
  return 1;
}

uint32_t qorext_hook_sprint_handler(uint8_t* request, uint32_t) {
  LOGE("qorext_hook_sprint_handler: ENTER ");
  if (request == nullptr) {
    LOGE("qorext_hook_sprint_handler: p_hdr == NULL ");
    return kCarrierServed;
  }

  uint32_t id = cdma_id(request);
  const CarrierRow* row = find_row(id);
  if (row == nullptr) {
    LOGE("qorext_hook_sprint_handler: Unexpected MSG ID: %d", id);
    return kCarrierDeclined;
  }

  row->log_entry(id);
  if (row->payload == kNonEmpty && cdma_length(request) == 0) return kCarrierDeclined;

  CarrierReply reply;
  uint32_t status = row->operation(request, reply);
  // Without memory for the reply the request is declined, and the fallback table may serve it.
  bool sent = send_reply(*row, request, status, reply) != 0;
  return sent && row->outcome == kServed ? kCarrierServed : kCarrierDeclined;
}

// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/carrier_handler.h"

#include "src/carrier/carrier_operations.h"
#include "src/carrier/carrier_reply.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"

namespace {

enum Payload { kAnyPayload, kSomePayload };  // kSomePayload: refused without a reply when empty

// Which header the reply goes out with: the request's own, or a fresh one with this id.
struct ReplyHeader {
  bool is_local;
  uint32_t id;
};
constexpr ReplyHeader kRequestHeader = {false, 0};
constexpr ReplyHeader local(uint32_t id) { return {true, id}; }

// What becomes of a request that has been answered. kDeclined makes the parent get a second reply,
// "not supported", behind the real one; that is meant.
enum Outcome { kServed, kDeclined };

struct CarrierRow {
  uint32_t id;
  void (*announce)(uint32_t id);
  Payload payload;
  CarrierOperation* operation;
  ReplyHeader header;
  Outcome outcome;
};

void quiet(uint32_t) {}

void getting(uint32_t id) {
  LOGE("qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE %d ", id);
  LOGE("qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE %d ", id);
}

void setting(uint32_t id) {
  LOGE("qorext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE %d ", id);
}

void obsolete(uint32_t id) { LOGD("qorext_hook_sprint_handler: Obsolete MSG ID: %d", id); }

constexpr CarrierRow kProvisioningTable[] = {
  // The reply to a BC14 query carries the id of the BC10 query. That is meant.
    {0x020000B0, getting,  kAnyPayload,  get_bc10_status,          local(0x020000B0), kServed  },
    {0x020000B1, setting,  kSomePayload, set_bc10_status,          kRequestHeader,    kServed  },
    {0x020000B2, getting,  kAnyPayload,  get_bc14_status,          local(0x020000B0), kServed  },
    {0x020000B3, setting,  kSomePayload, set_bc14_status,          kRequestHeader,    kServed  },
    {0x020000B4, setting,  kSomePayload, set_roaming_list_segment, kRequestHeader,    kServed  },
    {0x020000B5, setting,  kSomePayload, set_active_profile,       kRequestHeader,    kDeclined},
    {0x020000B6, quiet,    kAnyPayload,  factory_reset,            kRequestHeader,    kServed  },
    {0x020000B7, quiet,    kAnyPayload,  get_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000B8, quiet,    kAnyPayload,  set_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000B9, quiet,    kAnyPayload,  get_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000BA, quiet,    kAnyPayload,  set_ddtm_preference,      kRequestHeader,    kServed  },
    {0x020000BB, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000BC, quiet,    kAnyPayload,  get_bsr_timer,            kRequestHeader,    kServed  },
    {0x020000BD, quiet,    kAnyPayload,  set_bsr_timer,            kRequestHeader,    kServed  },
    {0x020000BE, quiet,    kAnyPayload,  get_lte_option,           kRequestHeader,    kServed  },
    {0x020000BF, quiet,    kAnyPayload,  set_lte_option,           kRequestHeader,    kServed  },
    {0x020000C0, quiet,    kAnyPayload,  get_lte_data,             kRequestHeader,    kServed  },
    {0x020000C1, quiet,    kAnyPayload,  get_active_ehrpd_apn,     kRequestHeader,    kServed  },
    {0x020000C2, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C3, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C4, quiet,    kAnyPayload,  get_tot_order,            kRequestHeader,    kServed  },
    {0x020000C5, quiet,    kAnyPayload,  update_tot_order,         kRequestHeader,    kServed  },
    {0x020000C6, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C7, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C8, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000C9, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000CA, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
    {0x020000CB, obsolete, kAnyPayload,  refuse_obsolete,          kRequestHeader,    kServed  },
};

constexpr CarrierRow kProgrammingTable[] = {
    {0x02000001, getting, kAnyPayload,  get_nam_info,             local(0x02000001), kServed  },
    {0x02000002, quiet,   kSomePayload, set_nam_info,             kRequestHeader,    kServed  },
    {0x02000003, getting, kAnyPayload,  get_sid_nid_pairs,        local(0x02000003), kServed  },
    {0x02000004, quiet,   kSomePayload, set_sid_nid_pairs,        kRequestHeader,    kServed  },
    {0x02000007, getting, kAnyPayload,  get_mob_p_rev,            local(0x02000007), kServed  },
    {0x0200000A, quiet,   kAnyPayload,  verify_subsidy_lock_code, local(0x0200000A), kServed  },
    {0x02000011, quiet,   kAnyPayload,  get_call_processing_data, local(0x02000011), kServed  },
    {0x02000012, quiet,   kAnyPayload,  get_evdo_data,            local(0x02000012), kServed  },
    {0x02000013, quiet,   kAnyPayload,  write_akey,               kRequestHeader,    kDeclined},
    {0x02000015, quiet,   kAnyPayload,  rde_write,                local(0x02000015), kServed  },
    {0x02000016, quiet,   kAnyPayload,  rde_read,                 local(0x02000016), kServed  },
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

// Answers in the request's own header: what follows its length and status stays as it was received.
uint32_t send_reply(const CarrierRow& row, uint8_t* request, uint32_t status,
                    const CarrierReply& reply) {
  uint8_t fresh[kCdmaReplySize] = {};
  store_le32(fresh + kCdmaId, row.header.id);

  uint8_t* header = row.header.is_local ? fresh : request;
  store_le32(header + kCdmaLength, reply.length);
  store_le32(header + kCdmaStatus, status);
  return qorext_hook_sprint_send_response(header, reply.length > 0 ? reply.data : nullptr);
}

}  // namespace

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

  row->announce(id);
  if (row->payload == kSomePayload && cdma_length(request) == 0) return kCarrierDeclined;

  CarrierReply reply;
  uint32_t status = row->operation(request, reply);
  bool sent = send_reply(*row, request, status, reply) != 0;
  return sent && row->outcome == kServed ? kCarrierServed : kCarrierDeclined;
}

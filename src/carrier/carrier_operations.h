// SPDX-License-Identifier: Apache-2.0
// The operations behind the carrier handler's tables. Each takes the whole request buffer, fills
// the reply's data (left empty for a reply without) and returns the reply's status.
#pragma once

#include <stdint.h>

#include "src/carrier/carrier_reply.h"

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

// nam_read.cpp, nam_write.cpp, sid_nid.cpp: the number assignment module.
CarrierOperation get_nam_info;
CarrierOperation set_nam_info;
CarrierOperation get_sid_nid_pairs;
CarrierOperation set_sid_nid_pairs;

// call_processing.cpp, evdo.cpp: live engineering data.
CarrierOperation get_call_processing_data;
CarrierOperation get_evdo_data;

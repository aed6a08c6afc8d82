#include "carrier/carrier_handler.h"

#include "host/framing.h"
#include "host/log.h"

uint32_t qorext_hook_sprint_handler(uint8_t* request, uint32_t) {
  LOGE("qorext_hook_sprint_handler: ENTER ");
  if (request == nullptr) {
    LOGE("qorext_hook_sprint_handler: p_hdr == NULL ");
    return kCarrierServed;
  }
  LOGE("qorext_hook_sprint_handler: Unexpected MSG ID: %d", cdma_id(request));
  return kCarrierDeclined;
}

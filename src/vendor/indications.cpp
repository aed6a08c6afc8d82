#include "vendor/indications.h"

#include "host/log.h"

void handleUnsolMsg(qmi_client_type, unsigned int indication_id, void*, unsigned int, void*) {
  LOGE("Handling unsol msg %d", indication_id);
  LOGE("Unsol resp 0x%x not supported by Sprint handler.", indication_id);
  LOGE("Unsupported Indicator message %u", indication_id);
}

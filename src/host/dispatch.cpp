// SPDX-License-Identifier: Apache-2.0
#include <span>

#include "src/carrier/carrier_handler.h"
#include "src/features/features.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/host.h"
#include "src/vendor/handlers.h"

namespace {

// The result is ignored: handlers report through their reply alone.
using HookHandler = int (*)(const uint8_t* request, uint32_t argument);

struct HookDispatchEntry {
  uint32_t message_id;
  uint32_t argument;
  HookHandler handler;
};

constexpr uint32_t kFromRequest = 0xFFFFFFFF;  // the request names the item
constexpr uint32_t kCarrierArgument = 0xFFFFFFFF;

constexpr HookDispatchEntry kGenericTable[] = {
    {0x50019, 0, handleSilentReboot            },
    {0x5001E, 0, handleSysInfoFilter           },
    {0x60001, 0, handleDataPlmn                },
    {0x50020, 0, handleSignalCoverage          },
    {0x50029, 0, handleSignalCoverageWithMode  },
    {0xA0006, 0, handleOperatorName            },
    {0x5002A, 0, qorext_hook_set_antenna_tuning},
    {0x50505, 0, handleCallEndRadioState       },
};

// The argument of the NV rows is the RDE id.
constexpr HookDispatchEntry kCdmaFallbackTable[] = {
    {0x02000016, kFromRequest, genNvRead         },
    {0x02000015, kFromRequest, genNvWrite        },
    {0x02000007, 28,           nvRead            },
    {0x02000008, 28,           nvWrite           },
    {0x0200000A, 32,           nvRead            },
    {0x0200001C, 0,            myPfpRequest      },
    {0x0200001E, 0,            handleUtilsRequest},
    {0x02000017, 38,           nvRead            },
    {0x02000018, 38,           nvWrite           },
    {0x02000019, 39,           nvRead            },
    {0x0200001A, 39,           nvWrite           },
    {0x0200000D, 10003,        nvRead            },
    {0x0200000E, 10003,        nvWrite           },
    {0x0200000F, 37,           nvRead            },
    {0x02000010, 37,           nvWrite           },
};

constexpr bool has_reply_to_every_read(std::span<const HookDispatchEntry> table) {
  for (const HookDispatchEntry& entry : table) {
    if (entry.handler == nvRead && find_nv_response(entry.message_id) == nullptr) return false;
  }
  return true;
}
static_assert(has_reply_to_every_read(kCdmaFallbackTable), "a read has no NV response row");

// Calls the first row's handler with this id; false when there is none.
bool call_handler(std::span<const HookDispatchEntry> table, uint32_t id, const uint8_t* request) {
  for (const HookDispatchEntry& entry : table) {
    if (entry.message_id != id) continue;
    entry.handler(request, entry.argument);
    return true;
  }
  return false;
}

}  // namespace

void dispatch_generic(const uint8_t* request, uint32_t id) {
  if (call_handler(kGenericTable, id, request)) return;
  LOGE("0x%x not supported", generic_id_for_log(request));
  send_generic_error(request);
}

void dispatch_cdma(uint8_t* request, uint32_t id) {
  // Two carrier requests are declined after their reply: the parent gets a second one, of status 6.
  if (qorext_hook_sprint_handler(request, kCarrierArgument) == kCarrierServed) {
    LOGE("0x%x is handled by Sprint handler.", id);
    return;
  }
  LOGE("0x%x not supported by Sprint handler.", id);

  if (call_handler(kCdmaFallbackTable, id, request)) return;
  LOGE("0x%x not supported", id);
  send_cdma_status(id, kStatusNotSupported);
}

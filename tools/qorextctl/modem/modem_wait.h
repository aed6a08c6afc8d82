// SPDX-License-Identifier: Apache-2.0
// Commands to the modem whose end comes later than their answer.
#pragma once

#include "tools/qorextctl/modem/modem_control.h"

namespace qorextctl {

// As ModemControl::call(), but of "kpi" the answer comes when the whole log has been handed to the
// transport, and of "hob_save" when the phone has answered; unless the command says "wait":false.
// `timeout_seconds` is for each answer, and for an upload without progress.
Result<Json> call_to_end(ModemControl& modem, Json command, double timeout_seconds);

}  // namespace qorextctl

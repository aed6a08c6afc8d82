// SPDX-License-Identifier: Apache-2.0
// The readable names of the state's values, with their limits: the shape of scenario files and of
// the control socket's "state" and "set".
#pragma once

#include "modem/state/archive.h"
#include "modem/state/nam.h"
#include "modem/state/state.h"

namespace modem {

void describe(Archive& archive, Nam& nam);
void describe(Archive& archive, Settings& settings);
void describe(Archive& archive, LteCell& cell);
void describe(Archive& archive, Apn& apn);
void describe(Archive& archive, Operator& entry);
void describe(Archive& archive, Security& security);
void describe(Archive& archive, RoamingList& list);
void describe(Archive& archive, Carrier& carrier);
void describe(Archive& archive, CallProcessingRecord& record);
void describe(Archive& archive, EvdoRecord& record);
void describe(Archive& archive, Engineering& engineering);
void describe(Archive& archive, Pfp& pfp);
void describe(Archive& archive, Features& features);
// The sections "nam" and "settings" are views of the NV items, which "nv" lists as they are; items
// given there come last and so win.
void describe(Archive& archive, State& state);

}  // namespace modem

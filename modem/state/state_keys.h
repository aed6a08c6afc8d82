// SPDX-License-Identifier: Apache-2.0
// The keys of the state with their types and limits: those of scenario files, of the control
// socket's "state" and "set", and of "qorextctl modem set".
#pragma once

#include "modem/state/archive.h"
#include "modem/state/state.h"

namespace modem {

// The sections "nam" and "settings" are views of the NV items, which "nv" lists as bytes. Items
// are read last, so they win over the views.
void describe(Archive& archive, State& state);

// Every key, with the factory's values.
const std::vector<Key>& state_keys();

}  // namespace modem

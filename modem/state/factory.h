// SPDX-License-Identifier: Apache-2.0
// The modem as it leaves the factory: believable, invented content.
#pragma once

#include "modem/state/state.h"

namespace modem {

State factory_state();

}  // namespace modem

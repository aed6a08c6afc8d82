// The modem as it leaves the factory: believable, invented content.
#pragma once

#include "state/state.h"

namespace modem {

State factory_state();

}  // namespace modem

// SPDX-License-Identifier: Apache-2.0
// What is different between what was recorded and what came.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/recording/qmi_message.h"

namespace qorextctl {

struct Difference {
  std::string field;  // "fields.pairs[2].sid"; empty: the whole is missing, or nobody expected it
  Json expected;      // null: nothing was expected
  Json got;           // null: nothing came
};

// Something decoded, and how it is shown.
struct Comparable {
  Json value;
  Json shown;  // the same members; personal values may be masked
};
Comparable comparable(const DecodedFrame& frame, bool show_personal);
Comparable comparable(const QmiMessage& message, bool show_personal);

// Field by field. Bytes count only where no field tells them apart.
std::vector<Difference> compare(const Comparable& expected, const Comparable& got);

}  // namespace qorextctl

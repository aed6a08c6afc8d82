// SPDX-License-Identifier: Apache-2.0
// Events as they stand in a recording, member by member. Members of another type than theirs count
// as missing: what a masked line shows has been checked by nobody.
#pragma once

#include <optional>

#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// Null when there is none.
const Json* member(const Json& event, const char* key);
std::string text_of(const Json& event, const char* key);  // empty when missing
uint64_t number_of(const Json& event, const char* key);   // 0 when missing
int64_t time_of(const Json& event);                       // nanoseconds
Json fields_of(const Json& event);                        // null when missing

// Of a frame: its name, or else its id.
std::string name_of(const Json& event);
// "qorext element_read request".
std::string title_of(const Json& event);
// What a person wants to know of a frame or message besides.
Json arguments_of(const Json& event);

// Who has written a line of the log.
struct Speaker {
  std::string thread;
  bool is_main;
  std::string text;
};
std::optional<Speaker> speaker_of(const Json& event);

}  // namespace qorextctl

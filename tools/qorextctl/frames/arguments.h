// SPDX-License-Identifier: Apache-2.0
// Builds the bytes of a request from the words of a command.
#pragma once

#include <span>
#include <string>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

struct Command {
  const Request* request;
  Bytes bytes;  // as written to the request pipe
};

// `words` is a request's name and key=value pairs. A record (json=FILE) is read from standard input
// for the name "-" if `stdin_free`. Errors name the request, the fault and the command that helps.
Result<Command> parse_command(std::span<const std::string> words, bool stdin_free);

// Suggests the nearest name.
Error unknown_request(const std::string& name);

// A whole request as hexadecimal text, in one or more words.
Result<Bytes> parse_raw(std::span<const std::string> words);

}  // namespace qorextctl

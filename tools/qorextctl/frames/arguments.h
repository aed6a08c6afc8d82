// SPDX-License-Identifier: Apache-2.0
// From the words of a command to the bytes of a request.
#pragma once

#include <span>
#include <string>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/protocol.h"

namespace qorextctl {

struct Command {
  const Request* request;
  Bytes bytes;  // as they go onto the request pipe
};

// `words` is a request's name and key=value pairs. A record (json=FILE) is read from standard input
// for the name "-" where `stdin_free`. Errors name the request, what is wrong and where to look.
Result<Command> parse_command(std::span<const std::string> words, bool stdin_free);

// Says which name comes nearest.
Error unknown_request(const std::string& name);

// Hex of a whole request, one or more words.
Result<Bytes> parse_raw(std::span<const std::string> words);

}  // namespace qorextctl

// SPDX-License-Identifier: Apache-2.0
// Help within a session, from the tables that the session works with.
#pragma once

#include <string>

#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/catalogue/request.h"

namespace qorextctl {

struct HelpTopic {
  const Request* request;  // one of the catalogue; null: a text
  std::string text;
};

// Every line that a session takes.
HelpTopic all_help();

// A request with its arguments and its reply's fields, or another line. An unknown name is an error
// that says which one comes nearest.
Result<HelpTopic> help_on(const std::string& name);

// The lines that are no requests, one a line; for --help.
std::string session_lines();

}  // namespace qorextctl

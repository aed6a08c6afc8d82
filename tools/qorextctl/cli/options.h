// SPDX-License-Identifier: Apache-2.0
// What the command line sets.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/load/load_options.h"
#include "tools/qorextctl/output/terminal.h"
#include "tools/qorextctl/phone/phone_files.h"

namespace qorextctl {

enum class Verb {
  request,
  raw,
  session,
  shell,
  load,
  list,
  decode,
  modem,
  phone,
  record,
  replay,
  trace
};

enum class InputKind { automatic, request, reply, unsolicited, log };

struct DecodeOptions {
  InputKind as = InputKind::automatic;
  std::string input = "-";  // a file; "-" is standard input
};

struct Options : LaunchOptions {
  Verb verb = Verb::list;
  std::vector<std::string> words;  // after the verb
  bool json = false;
  bool show_personal = false;
  ColourWhen colour = ColourWhen::automatic;
  PhoneFiles phone;
  DecodeOptions decode;
  std::string output;  // of record and trace; "-" is standard output
  LoadOptions load;
};

}  // namespace qorextctl

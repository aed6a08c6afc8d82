// Frames and logs that were recorded elsewhere.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "output.h"

namespace qorextctl {

enum class InputKind { automatic, request, reply, unsolicited, log };

struct DecodeOptions {
  InputKind as = InputKind::automatic;
  std::string input = "-";  // a file; "-" is standard input
};

// `words` are the hex of one frame; without them lines are read, each the hex of a frame or a
// log's. Malformed frames are `refused`, bytes that are no frame `usage`; a log's dumps are shown
// as they are.
Outcome decode_input(const std::vector<std::string>& words, const DecodeOptions& options,
                     bool show_personal, Printer& printer);

}  // namespace qorextctl

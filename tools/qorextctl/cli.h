// The command line.
#pragma once

#include <string>
#include <vector>

#include "deadline.h"
#include "decode_input.h"
#include "load_options.h"
#include "output.h"
#include "phone_files.h"
#include "private_setup.h"

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

struct Options {
  Verb verb = Verb::list;
  std::vector<std::string> words;  // behind the verb
  bool json = false;
  bool log = false;
  bool show_personal = false;
  ColourWhen colour = ColourWhen::automatic;
  unsigned instance = 0;
  double timeout = kDefaultTimeoutSeconds;
  std::string daemon_executable;  // empty: the one beside this program
  SetupOptions setup;
  PhoneFiles phone;
  DecodeOptions decode;
  std::string output;  // of record and trace; "-" is standard output
  LoadOptions load;
};

// The options, or the text that was asked for (help, version, completion), or what is wrong.
// Whether output is to be JSON, and its colour, is set in any case.
struct Parsed {
  Options options;
  std::string text;
  bool is_text = false;
  std::optional<Error> error;
};
Parsed parse_command_line(int argc, const char* const* argv);

// What may stand for the last word of a command line, as command_line.h tells it.
std::string complete_command_line(const std::vector<std::string>& words);

// Does what the options say. Returns the exit status.
int run(const Options& options, Printer& printer);

}  // namespace qorextctl

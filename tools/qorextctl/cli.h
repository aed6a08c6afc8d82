// The command line.
#pragma once

#include <string>
#include <vector>

#include "output.h"
#include "phone_files.h"
#include "private_setup.h"

namespace qorextctl {

enum class Verb { request, raw, session, list, modem, phone };

struct Options {
  Verb verb = Verb::list;
  std::vector<std::string> words;  // behind the verb
  bool json = false;
  bool log = false;
  unsigned instance = 0;
  double timeout = 20;
  std::string daemon_executable;  // empty: the one beside this program
  SetupOptions setup;
  PhoneFiles phone;
};

// Either the options, or the exit status and the text to print (help, version, what is wrong).
struct Parsed {
  Options options;
  bool proceed = false;
  int exit_status = 0;
  std::string text;
};
Parsed parse_command_line(int argc, const char* const* argv);

// Does what the options say. Returns the exit status.
int run(const Options& options, Printer& printer);

}  // namespace qorextctl

// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <exception>
#include <iostream>

#include "tools/qorextctl/cli/cli.h"
#include "tools/qorextctl/run.h"

namespace {

using qorextctl::Colours;
using qorextctl::Outcome;

int run_parsed(const qorextctl::Parsed& parsed, qorextctl::Printer& printer) {
  if (parsed.error) {
    printer.error(*parsed.error);
    return static_cast<int>(parsed.error->outcome);
  }
  if (!parsed.is_text) return qorextctl::run(parsed.options, printer);
  std::cout << parsed.text;
  return 0;
}

int fail(qorextctl::Printer& printer, const std::string& what) {
  printer.error({Outcome::broken, what});
  return static_cast<int>(Outcome::broken);
}

}  // namespace

int main(int argc, char** argv) {
  qorextctl::Parsed parsed = qorextctl::parse_command_line(argc, argv);
  qorextctl::Printer printer(std::cout, std::cerr, parsed.options.json);
  printer.use_colours(Colours::choose(parsed.options.colour, STDOUT_FILENO),
                      Colours::choose(parsed.options.colour, STDERR_FILENO));
  try {
    int status = run_parsed(parsed, printer);
    if (std::cout.flush()) return status;
  } catch (const std::exception& exception) {
    return fail(printer, exception.what());
  }
  return fail(printer,
              "cannot write to standard output: expected an open file or pipe with space left");
}

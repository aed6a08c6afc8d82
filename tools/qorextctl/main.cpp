#include <iostream>

#include "cli.h"

int main(int argc, char** argv) {
  qorextctl::Parsed parsed = qorextctl::parse_command_line(argc, argv);
  if (!parsed.proceed) {
    (parsed.exit_status == 0 ? std::cout : std::cerr) << parsed.text;
    return parsed.exit_status;
  }
  qorextctl::Printer printer(std::cout, std::cerr, parsed.options.json);
  return qorextctl::run(parsed.options, printer);
}

// SPDX-License-Identifier: Apache-2.0
// Executes a program under a list of system calls in minijail's format, as the parent on a phone
// does with minijail. Every other call ends the program with SIGSYS.
//
//   confine POLICY PROGRAM ARGUMENT...
//
// A line is "name: 1", "name: return ERRNO" or "name: CONDITION || CONDITION". A condition is
// "argN == VALUE", "argN & VALUE" (the single bit VALUE is set) or "argN in ~VALUE" (no bit of
// VALUE is set). Anything else is refused, with status 2.
#include <errno.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

constexpr int kRefused = 2;
constexpr int kArguments = 6;  // of a system call

struct Constant {
  const char* name;
  uint64_t value;
};

#define CONSTANT(name) \
  { #name, static_cast < uint64_t>(name) }
constexpr Constant kConstants[] = {
    CONSTANT(AF_UNIX),   CONSTANT(CLONE_THREAD), CONSTANT(ENOSYS),
    CONSTANT(PROT_EXEC), CONSTANT(PROT_WRITE),   CONSTANT(PR_SET_NAME),
};

uint64_t value_of(const std::string& word) {
  for (const Constant& constant : kConstants) {
    if (word == constant.name) return constant.value;
  }
  return std::stoull(word, nullptr, 0);
}

scmp_arg_cmp condition(const std::string& argument, const std::string& operation,
                       const std::string& word) {
  if (argument.size() != 4 || !argument.starts_with("arg")) throw std::invalid_argument(argument);
  auto number = static_cast<unsigned>(argument[3] - '0');
  if (number >= kArguments) throw std::invalid_argument(argument);
  if (operation == "==") return {number, SCMP_CMP_EQ, value_of(word), 0};
  if (operation == "&") return {number, SCMP_CMP_MASKED_EQ, value_of(word), value_of(word)};
  if (operation != "in" || !word.starts_with('~')) throw std::invalid_argument(operation);
  return {number, SCMP_CMP_MASKED_EQ, value_of(word.substr(1)), 0};
}

// Each alternative is a rule of its own. Throws for a call or a rule that libseccomp refuses.
void add(scmp_filter_ctx filter, const std::string& name, const Words& words) {
  int call = seccomp_syscall_resolve_name(name.c_str());
  auto check = [&](int result) {
    if (call < 0 || result != 0) throw std::invalid_argument(name);
  };
  if (words == Words{"1"})
    return check(seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 0, nullptr));
  if (words.size() == 2 && words[0] == "return") {
    auto error = static_cast<uint16_t>(value_of(words[1]));
    return check(seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(error), call, 0, nullptr));
  }
  for (size_t i = 0; i < words.size(); i += 4) {
    if (i + 3 != words.size() && words.at(i + 3) != "||") throw std::invalid_argument(words[i + 3]);
    scmp_arg_cmp when = condition(words.at(i), words.at(i + 1), words.at(i + 2));
    check(seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &when));
  }
}

void add_line(scmp_filter_ctx filter, const std::string& line) {
  if (line.empty() || line[0] == '#') return;
  std::istringstream fields(line);
  std::string name;
  fields >> name;
  if (!name.ends_with(':')) throw std::invalid_argument(name);
  name.pop_back();
  Words words;
  for (std::string word; fields >> word;) words.push_back(word);
  if (words.empty()) throw std::invalid_argument(name);
  add(filter, name, words);
}

// Sets "no new privileges" too: without it the kernel accepts a filter only from root.
bool apply(const char* path) {
  scmp_filter_ctx filter = seccomp_init(SCMP_ACT_KILL_PROCESS);
  std::ifstream file(path);
  std::string line;
  try {
    while (std::getline(file, line)) add_line(filter, line);
  } catch (const std::exception&) {
    fprintf(stderr, "confine: %s: not a rule: %s\n", path, line.c_str());
    return false;
  }
  if (file.eof() && seccomp_load(filter) == 0) return true;
  fprintf(stderr, "confine: %s: cannot be applied: %s\n", path, strerror(errno));
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    fputs("usage: confine POLICY PROGRAM ARGUMENT...\n", stderr);
    return kRefused;
  }
  if (!apply(argv[1])) return kRefused;
  execv(argv[2], argv + 2);
  fprintf(stderr, "confine: cannot execute %s\n", argv[2]);
  return kRefused;
}

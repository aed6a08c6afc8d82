// SPDX-License-Identifier: Apache-2.0
// How the executables are compiled and linked. Each property is also checked on a program that is
// built without it, to detect a check that cannot fail.
#include <gtest/gtest.h>

#include <ostream>

#include "tests/hardening/elf_file.h"

namespace {

struct Property {
  const char* name;
  bool (ElfFile::*holds)() const;
};

// Test names must not contain addresses, which change between runs.
std::ostream& operator<<(std::ostream& out, const Property& property) {
  return out << property.name;
}

const Property kProperties[] = {
    {"IsPositionIndependent", &ElfFile::is_position_independent},
    {"HasFullRelro", &ElfFile::has_full_relro},
    {"HasAStackThatIsNotExecutable", &ElfFile::has_plain_stack},
    {"HasAStackProtector", &ElfFile::has_stack_protector},
    {"ChecksTheRoomOfLibraryCalls", &ElfFile::has_fortified_calls},
    {"GuardsIndirectBranches", &ElfFile::guards_indirect_branches},
    {"SearchesLibrariesInSafeFoldersOnly", &ElfFile::has_safe_library_path},
};

class Hardening : public testing::TestWithParam<Property> {
 protected:
  static bool holds(const std::string& program) {
    return (ElfFile(QOREXT_PROGRAMS "/" + program).*GetParam().holds)();
  }
};

TEST_P(Hardening, OfTheDaemon) { EXPECT_TRUE(holds("qorext_client")); }
TEST_P(Hardening, OfTheModem) { EXPECT_TRUE(holds("qorext_modem")); }
TEST_P(Hardening, OfTheTool) { EXPECT_TRUE(holds("qorextctl")); }
TEST_P(Hardening, IsMissingInTheUnprotectedProgram) {
  EXPECT_FALSE((ElfFile(QOREXT_UNPROTECTED).*GetParam().holds)());
}

INSTANTIATE_TEST_SUITE_P(Properties, Hardening, testing::ValuesIn(kProperties),
                         [](const auto& one) { return std::string(one.param.name); });

// Only the daemon has frames larger than a page.
TEST(StackClashProtection, TouchesEveryPageOfALargeFrame) {
  EXPECT_TRUE(ElfFile(QOREXT_PROGRAMS "/qorext_client").probes_large_frames());
  EXPECT_FALSE(ElfFile(QOREXT_UNPROTECTED).probes_large_frames());
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "phone_path.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <thread>

#include "tests/unit/platform/temp_folder.h"

namespace {

using test_support::ScopedEnv;

TEST(PhonePath, IsThePathItselfWithoutARoot) {
  const char* path = "/data/vorn";
  EXPECT_EQ(phone_path(path), path);
}

TEST(PhonePath, BeginsWithTheRoot) {
  const struct {
    const char* root;
    const char* path;
    const char* result;
  } kCases[] = {
      {"", "/data/vorn", "/data/vorn"},
      {"/tmp/phone", "/data/vorn", "/tmp/phone/data/vorn"},
      {"/tmp", "", ""},
  };
  for (const auto& [root, path, result] : kCases) {
    ScopedEnv env("QOREXT_PHONE_ROOT", root);
    EXPECT_STREQ(phone_path(path), result);
  }
}

TEST(PhonePath, IsValidForTwoPathsAtATime) {
  ScopedEnv root("QOREXT_PHONE_ROOT", "/r");
  const char* first = phone_path("/a");
  const char* second = phone_path("/b");
  EXPECT_STREQ(first, "/r/a");
  EXPECT_STREQ(second, "/r/b");
}

TEST(PhonePath, IsRefusedBySystemCallsWhenItIsTooLong) {
  ScopedEnv root("QOREXT_PHONE_ROOT", "/r");
  std::string fits = "/" + std::string(PATH_MAX - 4, 'a');
  std::string too_long = fits + "a";
  EXPECT_EQ(phone_path(fits.c_str()), "/r" + fits);
  EXPECT_EQ(access(phone_path(too_long.c_str()), F_OK), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(PhonePath, NeverNamesTheWorkstationsOwnFile) {
  ScopedEnv root("QOREXT_PHONE_ROOT", ("/" + std::string(PATH_MAX, 'r')).c_str());
  EXPECT_EQ(access(phone_path("/proc/self/stat"), F_OK), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(PhonePath, IsSeparateForEachThread) {
  ScopedEnv root("QOREXT_PHONE_ROOT", "/r");
  const char* mine = phone_path("/mine");
  std::thread([] {
    for (int i = 0; i < 4; ++i) EXPECT_STREQ(phone_path("/other"), "/r/other");
  }).join();
  EXPECT_STREQ(mine, "/r/mine");
}

}  // namespace

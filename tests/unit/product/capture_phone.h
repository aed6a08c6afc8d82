// SPDX-License-Identifier: Apache-2.0
// The phone's file system, for the tests of what the daemon reads and keeps there: a temporary
// folder and the clock. System calls work as ever, except where a test makes one fail; those that
// nobody could see in the files are in the trace. Paths are the phone's.
#pragma once

#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/unit/product/fake_phone.h"

// Of the trace.
class CapturePhone : public FakePhone {
 protected:
  CapturePhone();
  ~CapturePhone() override;
  void TearDown() override;  // no descriptor and no mapping may be left behind

 public:
  std::filesystem::path at(const std::string& path) const { return root_ + path; }
  // The phone's path of a file in the folder, or the path as it is.
  std::string phone_path_of(const std::string& path) const;

  void make_folder(const std::string& path) const;
  void put(const std::string& path, const std::string& content = "") const;  // with its folders
  void put_link(const std::string& path, const std::string& target) const;
  std::string content(const std::string& path) const;
  std::string target(const std::string& link) const;  // empty when there is none
  mode_t mode(const std::string& path) const;
  bool has(const std::string& path) const;  // a dangling link is there too

  // Scripts for "chmod", "chown", "ftruncate", "rename" and, each with a path, "open", "fsync",
  // "symlink": each such call fails with this errno.
  std::map<std::string, int> failing;
  std::function<void(const std::string& to)> on_rename = [](const std::string&) {};  // before it
  bool drop_box_accepts = true;
  time_t now;  // what time() tells: the moment the test began, unless it says otherwise

  std::map<std::string, int> opened;  // flags by path, of the latest open()

  struct Thread {
    void* (*body)(void*);
    void* argument;
    int detach_state;
  };
  std::vector<Thread> threads;  // asked for; none of them runs by itself

 private:
  std::string root_;
  mode_t umask_before_;
  size_t descriptors_before_;
};

// While it lives, files end at this size: the write that reaches it is short.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size);
  ~FileSizeLimit();

 private:
  rlimit before_;
};

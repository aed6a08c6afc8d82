// SPDX-License-Identifier: Apache-2.0
// The phone's file system in a temporary folder, and its clock. System calls work as usual unless a
// test makes one fail; those without effect on files are in the trace. Paths are the phone's.
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
  void TearDown() override;  // checks that all descriptors and mappings are closed

 public:
  std::filesystem::path at(const std::string& path) const { return root_ + path; }
  // The phone's path of a file in the folder; other paths are returned unchanged.
  std::string phone_path_of(const std::string& path) const;

  void make_folder(const std::string& path) const;
  void put(const std::string& path, const std::string& content = "") const;  // creates its folders
  void put_link(const std::string& path, const std::string& target) const;
  std::string content(const std::string& path) const;
  std::string target(const std::string& link) const;  // empty when there is none
  mode_t mode(const std::string& path) const;
  bool has(const std::string& path) const;  // true for a dangling link

  // Scripts for "chmod", "chown", "ftruncate", "rename" and, each with a path, "open", "fsync",
  // "symlink": each such call fails with this errno.
  std::map<std::string, int> failing;
  std::function<void(const std::string& to)> on_rename = [](const std::string&) {};  // before it
  bool drop_box_accepts = true;
  time_t now;  // the result of time(); the start of the test by default

  std::map<std::string, int> opened;  // flags of the latest open() by path

  struct Thread {
    void* (*body)(void*);
    void* argument;
    int detach_state;
  };
  std::vector<Thread> threads;  // requested threads; none is started

 private:
  std::string root_;
  mode_t umask_before_;
  size_t descriptors_before_;
};

// Limits the size of files during its lifetime: the write that reaches the limit is short.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size);
  ~FileSizeLimit();

 private:
  rlimit before_;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/linux/qmi_transport/scoped_fd.h"

namespace qmi_transport {

// A file that a listening socket was bound to, removed with it unless another has replaced it.
class SocketFile {
 public:
  explicit SocketFile(const std::string& path) : path_(path) { lstat(path_.c_str(), &identity_); }
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;
  ~SocketFile();

 private:
  std::string path_;
  struct stat identity_ {};
};

// A non-blocking SEQPACKET socket that listens there; the file of one that no process listens on
// any more is replaced. Empty on failure, with errno set.
ScopedFd listen_at(const std::string& path);

}  // namespace qmi_transport

// SPDX-License-Identifier: Apache-2.0
// The phone's files and the modem's sockets: a folder of a test's own. In the virtual handset,
// where QOREXT_HANDSET names the folder that is the daemon's root, the one phone that there is,
// emptied, and a modem on the kernel's QRTR sockets.
#pragma once

#include <string>

namespace e2e {

class PhoneRoot {
 public:
  // The daemon can use everything in it, also when it drops root's privileges.
  enum Content { prepared, bare };  // bare: folders without boot information and devices
  explicit PhoneRoot(Content content = prepared);
  PhoneRoot(const PhoneRoot&) = delete;
  PhoneRoot& operator=(const PhoneRoot&) = delete;
  ~PhoneRoot();

  // Where an executable lies: in the build folder unless others are to be used.
  std::string program(const std::string& name) const { return programs_ + "/" + name; }
  void use_programs(const std::string& folder) { programs_ = folder; }

  // Where a test finds the phone's files.
  const std::string& folder() const { return folder_; }
  // QOREXT_PHONE_ROOT and QOREXT_MODEM, as the daemon needs them.
  const std::string& daemon_root() const { return daemon_root_; }
  const std::string& modem() const { return modem_; }
  std::string control_socket() const { return path_ + "/control.sock"; }

  // The daemon may write a file that a test has put here.
  void give_to_daemon(const std::string& path) const;

  void set_property(const std::string& name, const std::string& value) const;
  // "(none)" when there is no such property.
  std::string property(const std::string& name) const;

 private:
  void use_handset(const std::string& folder);

  std::string path_;
  std::string folder_;
  std::string daemon_root_;
  std::string modem_;
  std::string programs_ = QOREXT_BIN;
};

}  // namespace e2e

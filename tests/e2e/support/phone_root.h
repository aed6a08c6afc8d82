// SPDX-License-Identifier: Apache-2.0
// The phone's files and the modem's sockets, in a temporary folder that one test owns. In the
// virtual handset there is only one phone: QOREXT_HANDSET names the daemon's root, which is emptied
// first, and the modem uses the kernel's QRTR sockets.
#pragma once

#include <string>

namespace e2e {

class PhoneRoot {
 public:
  // The daemon can use all of it, also after it has dropped root's privileges.
  enum Content { prepared, bare };  // bare: folders without boot information and devices
  explicit PhoneRoot(Content content = prepared);
  PhoneRoot(const PhoneRoot&) = delete;
  PhoneRoot& operator=(const PhoneRoot&) = delete;
  ~PhoneRoot();

  // The path of an executable, in the build folder or the folder given to use_programs().
  std::string program(const std::string& name) const { return programs_ + "/" + name; }
  void use_programs(const std::string& folder) { programs_ = folder; }

  // The phone's root as the test sees it.
  const std::string& folder() const { return folder_; }
  // QOREXT_PHONE_ROOT and QOREXT_MODEM, as the daemon needs them.
  const std::string& daemon_root() const { return daemon_root_; }
  const std::string& modem() const { return modem_; }
  std::string control_socket() const { return path_ + "/control.sock"; }

  // Lets the daemon write a file that the test has created.
  void give_to_daemon(const std::string& path) const;

  void set_property(const std::string& name, const std::string& value) const;
  // Returns "(none)" if the property is not set.
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

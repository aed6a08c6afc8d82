// The phone's files and the modem's sockets: a folder of a test's own.
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

  std::string folder() const { return path_ + "/phone"; }
  std::string modem_socket() const { return path_ + "/modem.sock"; }
  std::string control_socket() const { return path_ + "/control.sock"; }

  // The daemon may write a file that a test has put here.
  void give_to_daemon(const std::string& path) const;

  void set_property(const std::string& name, const std::string& value) const;
  // "(none)" when there is no such property.
  std::string property(const std::string& name) const;

 private:
  std::string path_;
  std::string programs_ = QOREXT_BIN;
};

}  // namespace e2e

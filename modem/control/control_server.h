// SPDX-License-Identifier: Apache-2.0
// The control socket: a Unix stream socket that takes command lines and returns answer lines. A
// connection that does not read, or sends without end, does not delay the others.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/linux/qmi_transport/descriptors.h"

namespace modem {

class ControlServer {
 public:
  struct Answered {
    std::string line;      // without the line end
    bool watches = false;  // from now on the connection gets the lines of report()
  };
  using Answer = std::function<Answered(const std::string& line)>;

  // Listens on `path`, and replaces a socket file that no process serves. Throws std::system_error.
  ControlServer(const std::string& path, Answer answer);
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  // Readable when serve() has work.
  int fd() const { return epoll_.get(); }
  void serve();

  // Queues a line for every connection that watches. A connection that does not read is closed at
  // its limit.
  void report(const std::string& line);
  bool is_watched() const;

 private:
  struct Connection {
    qmi_transport::ScopedFd socket;
    std::string input = {};   // after the last whole line
    std::string output = {};  // not yet sent
    bool watches = false;
    bool is_silent = true;  // has sent nothing yet
    uint64_t number = 0;    // in the order of acceptance
  };

  void accept_client();
  void pause_accepting();
  void resume_accepting();
  bool close_silent();
  // Each returns false when the connection is to be closed.
  bool handle(Connection& connection, uint32_t events);
  bool read_lines(Connection& connection);
  bool write_output(Connection& connection);
  bool watch(const Connection& connection, bool for_writing);

  std::string path_;
  Answer answer_;
  qmi_transport::ScopedFd epoll_;
  qmi_transport::ScopedFd listener_;
  qmi_transport::Timer pause_;
  std::map<int, Connection> connections_;
  uint64_t last_number_ = 0;
  bool is_short_ = false;  // of descriptors; has been reported
};

}  // namespace modem

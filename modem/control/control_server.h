// SPDX-License-Identifier: Apache-2.0
// The Unix stream socket that takes command lines and gives back answer lines, from any number of
// connections. No connection, whatever it sends or fails to read, holds up the others.
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
    bool watches = false;  // the connection gets what tell() is given from now on
  };
  using Answer = std::function<Answered(const std::string& line)>;

  // Listens on `path`. Throws std::system_error when it cannot, also when another process listens
  // there; a socket file that nobody serves is replaced.
  ControlServer(const std::string& path, Answer answer);
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  // Readable when serve() has something to do.
  int fd() const { return epoll_.get(); }
  void serve();

  // A line for every connection that watches. One that does not read for long is closed.
  void tell(const std::string& line);
  bool is_watched() const;

 private:
  struct Connection {
    qmi_transport::ScopedFd socket;
    std::string input = {};   // after the last whole line
    std::string output = {};  // not yet taken by the client
    bool watches = false;
    bool is_silent = true;  // has sent nothing yet
    uint64_t number = 0;    // in the order of their coming
  };

  void accept_client();
  void pause_accepting();
  void resume_accepting();
  bool close_silent();
  // Each returns false when the connection is at its end.
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
  bool is_short_ = false;  // of descriptors, which has been reported
};

}  // namespace modem

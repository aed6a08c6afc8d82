// SPDX-License-Identifier: Apache-2.0
// The name service. Its state is a file in the folder, with one server or lookup in a line. Every
// process changes it under a file lock.
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <vector>

#include "tests/unit/platform/qrtr_emulation.h"

namespace qrtr_emulation {
namespace {

struct Entry {
  char kind;  // 's' a server, 'l' a lookup
  uint32_t service;
  uint32_t instance;
  uint32_t port;
};

class State {
 public:
  State() : lock_(open(file("lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, kFileMode)) {
    flock(lock_, LOCK_EX);
    std::ifstream in(file("state"));
    Entry entry{};
    while (in >> entry.kind >> entry.service >> entry.instance >> entry.port) {
      entries.push_back(entry);
    }
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() {
    std::ofstream out(file("state"));
    for (const Entry& entry : entries) {
      out << entry.kind << ' ' << entry.service << ' ' << entry.instance << ' ' << entry.port
          << '\n';
    }
    out.close();
    chmod(file("state").c_str(), kFileMode);
    chmod(file("lock").c_str(), kFileMode);
    close(lock_);
  }

  std::vector<Entry> entries;

 private:
  static std::string file(const char* name) { return *folder() + "/" + name; }
  int lock_;
};

void send_control(uint32_t port, const qrtr_ctrl_pkt& packet) {
  uint8_t bytes[sizeof(packet)];
  memcpy(bytes, &packet, sizeof(packet));
  deliver({kNode, QRTR_PORT_CTRL}, port, bytes);
}

void send_server(uint32_t port, uint32_t type, const Entry& server) {
  qrtr_ctrl_pkt packet{};
  packet.cmd = type;
  packet.server = {server.service, server.instance, kNode, server.port};
  send_control(port, packet);
}

// As in the kernel: the instance of a lookup must be equal, including its version. 0 matches all.
bool matches(const Entry& lookup, const Entry& server) {
  if (lookup.service != 0 && lookup.service != server.service) return false;
  return lookup.instance == 0 || lookup.instance == server.instance;
}

void announce(const State& state, uint32_t type, const Entry& server) {
  for (const Entry& entry : state.entries) {
    if (entry.kind == 'l' && matches(entry, server)) send_server(entry.port, type, server);
  }
}

void remove_servers(State& state, uint32_t port) {
  std::vector<Entry> removed;
  std::erase_if(state.entries, [&](const Entry& entry) {
    bool gone = entry.kind == 's' && entry.port == port;
    if (gone) removed.push_back(entry);
    return gone;
  });
  for (const Entry& server : removed) announce(state, QRTR_TYPE_DEL_SERVER, server);
}

void remove_lookups(State& state, uint32_t port) {
  std::erase_if(state.entries,
                [port](const Entry& entry) { return entry.kind == 'l' && entry.port == port; });
}

void remove_port(State& state, uint32_t port) {
  remove_lookups(state, port);
  remove_servers(state, port);
  qrtr_ctrl_pkt packet{};
  packet.cmd = QRTR_TYPE_DEL_CLIENT;
  packet.client = {kNode, port};
  for (const Entry& entry : state.entries) {
    if (entry.kind == 's') send_control(entry.port, packet);
  }
  unlink(path_of(port).c_str());
}

// Removes the ports of processes that were killed.
void remove_dead_ports(State& state) {
  std::vector<uint32_t> dead;
  for (const Entry& entry : state.entries) {
    if (!is_open(entry.port)) dead.push_back(entry.port);
  }
  for (uint32_t port : dead) remove_port(state, port);
}

void add_server(State& state, const Entry& server) {
  remove_servers(state, server.port);
  state.entries.push_back(server);
  announce(state, QRTR_TYPE_NEW_SERVER, server);
}

void add_lookup(State& state, const Entry& lookup) {
  state.entries.push_back(lookup);
  for (const Entry& entry : state.entries) {
    if (entry.kind != 's' || !matches(lookup, entry)) continue;
    send_server(lookup.port, QRTR_TYPE_NEW_SERVER, entry);
  }
  qrtr_ctrl_pkt end_of_list{};
  end_of_list.cmd = QRTR_TYPE_NEW_SERVER;
  send_control(lookup.port, end_of_list);
}

}  // namespace

void on_control(uint32_t from_port, std::span<const uint8_t> packet) {
  qrtr_ctrl_pkt content;
  if (packet.size() != sizeof(content)) return;
  memcpy(&content, packet.data(), sizeof(content));

  State state;
  remove_dead_ports(state);
  uint32_t service = content.server.service;
  uint32_t instance = content.server.instance;
  switch (content.cmd) {
    case QRTR_TYPE_NEW_SERVER:
      return add_server(state, {'s', service, instance, from_port});
    case QRTR_TYPE_DEL_SERVER:
      return remove_servers(state, from_port);
    case QRTR_TYPE_NEW_LOOKUP:
      return add_lookup(state, {'l', service, instance, from_port});
    case QRTR_TYPE_DEL_LOOKUP:
      return remove_lookups(state, from_port);
    default:
      return;
  }
}

void on_close(uint32_t port) {
  State state;
  remove_port(state, port);
}

}  // namespace qrtr_emulation

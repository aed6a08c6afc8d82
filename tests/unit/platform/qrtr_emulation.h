// SPDX-License-Identifier: Apache-2.0
// Emulates the QRTR socket family for tests on machines whose kernel has none. The library is
// linked or preloaded before the C library and implements AF_QIPCRTR with Unix datagram sockets in
// the folder named by the environment variable QRTR_EMULATION. All processes with the same folder
// share one node and one name service. Without the variable all calls go to the kernel. Processes
// of several users need a folder that all of them can write to. Packets are received with
// recvmsg().
//
// As in the kernel, sending fails with ENOSPC when the receiver's queue is full and with ENODEV
// when the port is unknown. Closing a socket withdraws its servers and sends DEL_CLIENT to the
// other servers. A killed process is detected at the next change.
#pragma once

#include <linux/qrtr.h>
#include <stdint.h>
#include <sys/types.h>

#include <optional>
#include <span>
#include <string>

namespace qrtr_emulation {

constexpr uint32_t kNode = 1;

// The kernel's sockets have no permissions, so the files that emulate them are open to all users.
constexpr mode_t kFileMode = 0666;

// The folder of the emulation, or nullopt when it is off.
std::optional<std::string> folder();

struct Sender {
  uint32_t node;
  uint32_t port;
};

// Sends to a port of this node. Returns 0 or an errno value.
int deliver(const Sender& from, uint32_t to_port, std::span<const uint8_t> packet);

// Whether a process has the port open.
bool is_open(uint32_t port);

// The name service: handles a packet from a port, and the end of a port.
void on_control(uint32_t from_port, std::span<const uint8_t> packet);
void on_close(uint32_t port);

std::string path_of(uint32_t port);

}  // namespace qrtr_emulation

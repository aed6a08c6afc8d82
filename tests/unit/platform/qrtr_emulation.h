// SPDX-License-Identifier: Apache-2.0
// The QRTR socket family for machines whose kernel has none, for tests: a library that stands in
// front of the C library (linked first, or by LD_PRELOAD) and serves family AF_QIPCRTR over Unix
// datagram sockets in the folder named by the environment variable QRTR_EMULATION. All processes
// that name the same folder share one node and one name service. Without the variable everything
// goes to the kernel. Processes of several users need a folder that all of them may write to.
//
// As the kernel does, a full queue refuses a packet with ENOSPC and an unknown port with ENODEV,
// and closing a socket withdraws its servers and tells the other servers that a client is gone. A
// killed process is noticed at the next change.
#pragma once

#include <linux/qrtr.h>
#include <stdint.h>
#include <sys/types.h>

#include <optional>
#include <span>
#include <string>

namespace qrtr_emulation {

constexpr uint32_t kNode = 1;

// The kernel's family asks nobody who they are, so the files that stand for it are for all.
constexpr mode_t kForEverybody = 0666;

// The folder of the emulation; nothing when there is none.
std::optional<std::string> folder();

struct Sender {
  uint32_t node;
  uint32_t port;
};

// Sends to a port of this node. 0 or an errno value.
int deliver(const Sender& from, uint32_t to_port, std::span<const uint8_t> packet);

// Whether a process has the port open.
bool is_open(uint32_t port);

// What the name service does with a packet that a port has sent to it, and when a port is closed.
void on_control(uint32_t from_port, std::span<const uint8_t> packet);
void on_close(uint32_t port);

std::string path_of(uint32_t port);

}  // namespace qrtr_emulation

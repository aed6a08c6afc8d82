// SPDX-License-Identifier: Apache-2.0
// The parent process (the radio interface daemon) as the handlers see it: two pipes to write to and
// the number it gave this process.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Which instance of the program this is; 0 is the primary one. Set once by main, before any other
// thread starts, and only read afterwards.
extern uint32_t qor_ext_instance_id;
constexpr uint32_t kPrimaryInstance = 0;

// Sets the descriptors that replies and unsolicited messages are written to. Called once by main,
// before any other thread starts.
void set_parent_pipes(int reply_fd, int unsolicited_fd);

// Each writes one frame with one write() and returns 1, or 0 after logging errno. A short write is
// neither repeated nor reported. There is no lock: one thread writes to each pipe, the main thread
// the replies and the client library's callback thread the unsolicited messages.
int writeToParent(const void* buffer, size_t length);
int writeUnsolToParent(const void* buffer, size_t length);

// SPDX-License-Identifier: Apache-2.0
// How a radio interface daemon starts qorext_client, waits for its end and starts it again. Example
// code for the parent's own sources; it needs nothing but bionic.
#pragma once

#include <sys/types.h>

// The parent's ends of the three pipes, and the daemon's process; -1 for each while there is none.
struct QorextChannel {
  pid_t pid = -1;
  int requests = -1;     // write one request, read its reply, write the next
  int replies = -1;      // end of file: the daemon has exited
  int unsolicited = -1;  // must be read all the time: the daemon's writes wait for it
};

// Starts `program` with the three descriptors and the instance (0: the primary one) as arguments.
// Returns false with errno set if a pipe or the process could not be made; then nothing is left
// open and `channel` is unchanged. A program that cannot be executed exits with status 127. Safe in
// a process with threads. The caller ignores SIGPIPE: a write to a daemon that has exited then
// returns -1 with EPIPE.
bool start_qorext(const char* program, unsigned instance, QorextChannel* channel);

// Closes the pipes and waits until the daemon has exited, which the end of its requests makes it
// do. After `timeout_ms` it is killed. Returns the status of waitpid, or -1 if nothing was started.
int stop_qorext(QorextChannel* channel, int timeout_ms);

// The time to wait before the daemon is started again: doubles from 100 ms to one minute while it
// exits soon after its start, and begins again at 100 ms once it has run for a minute.
class RestartDelay {
 public:
  int next_ms(long ran_ms);

 private:
  int delay_ms_ = 0;
};

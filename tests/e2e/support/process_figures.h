// SPDX-License-Identifier: Apache-2.0
// What the kernel tells of a running process.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace e2e {

struct ProcessFigures {
  size_t resident;     // KiB
  size_t anonymous;    // KiB of these that are no file's
  size_t descriptors;  // open ones
  size_t threads;
};

ProcessFigures figures_of(pid_t pid);

// What each open descriptor is: "pipe", "socket", "anon_inode:[eventfd]", a path.
std::multiset<std::string> descriptors_of(pid_t pid);

// Where the next one would lie.
size_t lowest_free_descriptor(pid_t pid);

// In KiB: the process's share of every mapping but those of shared libraries' files.
size_t private_memory_of(pid_t pid);

// In clock ticks, of all threads.
uint64_t processor_time_of(pid_t pid);

}  // namespace e2e

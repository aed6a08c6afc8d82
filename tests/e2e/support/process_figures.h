// SPDX-License-Identifier: Apache-2.0
// The kernel's figures for a running process.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace e2e {

struct ProcessFigures {
  size_t resident;     // KiB
  size_t anonymous;    // KiB of `resident` that are not backed by a file
  size_t descriptors;  // open
  size_t threads;
};

ProcessFigures figures_of(pid_t pid);

// The kind of each open descriptor: "pipe", "socket", "anon_inode:[eventfd]", a path.
std::multiset<std::string> descriptors_of(pid_t pid);

// The number of the next descriptor that the process opens.
size_t lowest_free_descriptor(pid_t pid);

// In KiB: the process's share of all mappings except those of shared libraries.
size_t private_memory_of(pid_t pid);

// In clock ticks, of all threads.
uint64_t processor_time_of(pid_t pid);

}  // namespace e2e

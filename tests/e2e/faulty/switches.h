// SPDX-License-Identifier: Apache-2.0
// Fault switches of the library that is preloaded before the daemon's C library. Test and library
// map the same file: the test sets the switches, the library counts the injected faults.
#pragma once

#include <atomic>
#include <cstdint>

namespace e2e {

// The file that the library maps.
constexpr const char* kSwitchesVariable = "QOREXT_TEST_SWITCHES";

enum class Threads : uint32_t { main, others };

// 0 switches a fault off.
struct Switches {
  // The n-th allocation from now on fails in the threads selected.
  std::atomic<uint32_t> failing_allocation;
  std::atomic<Threads> failing_threads;
  std::atomic<uint32_t> without_memory;  // every allocation of theirs fails
  std::atomic<uint32_t> failed_allocations;

  // A write to a pipe is shortened to this number of bytes.
  std::atomic<uint32_t> max_written;

  // The next reads of a pipe fail with this errno and consume nothing.
  std::atomic<uint32_t> failing_reads;
  std::atomic<uint32_t> read_error;

  // A file cannot grow beyond this size, as on a full disk.
  std::atomic<uint32_t> max_file_size;

  // Opening a file for writing and creating a folder fail with this errno.
  std::atomic<uint32_t> file_error;

  // The number of SIGUSR1 caught by a handler without SA_RESTART, which interrupts system calls.
  std::atomic<uint32_t> caught_signals;
};

}  // namespace e2e

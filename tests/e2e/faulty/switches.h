// SPDX-License-Identifier: Apache-2.0
// Between a test and the library that it puts in front of the daemon's C library: a file that both
// have mapped. The test throws the switches; the library counts what it has done.
#pragma once

#include <atomic>
#include <cstdint>

namespace e2e {

// The file that the library maps.
constexpr const char* kSwitchesVariable = "QOREXT_TEST_SWITCHES";

enum class Threads : uint32_t { main, others };

struct Switches {
  // Memory: the n-th allocation of the threads named from now on fails; 0: none does.
  std::atomic<uint32_t> failing_allocation;
  std::atomic<Threads> failing_threads;
  std::atomic<uint32_t> without_memory;  // not 0: every allocation of theirs fails
  std::atomic<uint32_t> failed_allocations;

  // A write of more bytes than these to a pipe writes these alone; 0: no limit.
  std::atomic<uint32_t> most_written;

  // So many reads of a pipe fail with this errno, and what was to be read stays.
  std::atomic<uint32_t> failing_reads;
  std::atomic<uint32_t> read_error;

  // A file takes no byte beyond this size, as on a full disk; 0: no limit.
  std::atomic<uint32_t> largest_file;

  // Opening a file for writing, or making a folder, fails with this errno; 0: it does not.
  std::atomic<uint32_t> file_error;

  // Signals caught by a handler that lets system calls be interrupted: SIGUSR1.
  std::atomic<uint32_t> caught_signals;
};

}  // namespace e2e

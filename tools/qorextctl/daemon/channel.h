// SPDX-License-Identifier: Apache-2.0
// The parent's ends of the three pipes.
#pragma once

#include <optional>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {

// Reads frames from a pipe. One read may return several frames or a part of one.
class FramePipe {
 public:
  explicit FramePipe(UniqueFd input) : input_(std::move(input)) {}

  int fd() const { return input_.get(); }
  bool ended() const { return ended_; }
  // The descriptor for poll(). It is -1, which poll() skips, after the other end has closed the
  // pipe and while the buffer is full.
  int poll_fd() const { return ended_ || is_full() ? -1 : input_.get(); }

  // Reads the available bytes without waiting, at most one full pipe, so that it returns even if
  // the other end never stops writing.
  void read_available();
  // Returns the next complete frame that has been read. `size_of` returns the size of the frame at
  // the start of the bytes, or nothing while it is not known.
  template <class SizeOf>
  std::optional<Bytes> take(SizeOf size_of) {
    return buffer_.take(size_of);
  }
  // Waits for a complete frame. Returns nothing at the deadline or if the pipe has ended; the bytes
  // of a part are kept.
  template <class SizeOf>
  std::optional<Bytes> receive(SizeOf size_of, Deadline deadline);

  View pending() const { return buffer_.pending(); }
  Bytes take_all() { return buffer_.take_all(); }

 private:
  static constexpr size_t kMaxPending = size_t{16} << 20;

  bool is_full() const { return pending().size() >= kMaxPending; }
  bool readable(Deadline deadline) const;
  void read_once();

  UniqueFd input_;
  FrameBuffer buffer_;
  bool ended_ = false;
};

template <class SizeOf>
std::optional<Bytes> FramePipe::receive(SizeOf size_of, Deadline deadline) {
  for (;;) {
    auto frame = buffer_.take(size_of);
    if (frame || ended_ || !readable(deadline)) return frame;
    read_once();
  }
}

// Writes all bytes with one write(). Returns false if the pipe is closed or accepts only a part,
// and sets errno.
bool write_whole(int fd, View bytes);

}  // namespace qorextctl

// SPDX-License-Identifier: Apache-2.0
// The parent's ends of the three pipes.
#pragma once

#include <optional>
#include <variant>

#include "tools/qorextctl/base/bytes.h"
#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {

enum class Silence {
  timeout,  // no whole frame until the deadline; bytes of a part of one are kept
  ended,    // the other end has closed the pipe
};

// A frame, or why there is none.
class Received {
 public:
  Received(Bytes frame) : content_(std::move(frame)) {}
  Received(Silence silence) : content_(silence) {}

  explicit operator bool() const { return content_.index() == 0; }
  const Bytes& operator*() const { return std::get<0>(content_); }
  Silence silence() const { return std::get<1>(content_); }

 private:
  std::variant<Bytes, Silence> content_;
};

// Frames out of a pipe, however its bytes come: several in one read, one in many.
class FramePipe {
 public:
  explicit FramePipe(UniqueFd input) : input_(std::move(input)) {}

  int fd() const { return input_.get(); }
  bool ended() const { return ended_; }
  // -1, which poll() skips, once the other end has closed the pipe, and while so much has been read
  // and not taken that nothing more is read.
  int poll_fd() const { return ended_ || is_full() ? -1 : input_.get(); }

  // Reads what is there without waiting, at most as much as a pipe holds: who writes all the time
  // keeps nobody here.
  void read_available();
  // The next whole frame of those read already.
  template <class SizeOf>
  std::optional<Bytes> take(SizeOf size_of) {
    return buffer_.take(size_of);
  }
  template <class SizeOf>
  Received receive(SizeOf size_of, Deadline deadline);

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
Received FramePipe::receive(SizeOf size_of, Deadline deadline) {
  for (;;) {
    if (auto frame = buffer_.take(size_of)) return *frame;
    if (ended_) return Silence::ended;
    if (!readable(deadline)) return Silence::timeout;
    read_once();
  }
}

// One write() of all bytes; false when the pipe is closed or takes only a part (errno tells).
bool write_whole(int fd, View bytes);

}  // namespace qorextctl

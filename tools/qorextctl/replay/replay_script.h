// SPDX-License-Identifier: Apache-2.0
// A recording as the script of a replay: which request of the daemon's is which one of the
// recording, and what it is answered with.
#pragma once

#include "tools/qorextctl/recording/recording.h"

namespace qorextctl {

class ReplayScript {
 public:
  explicit ReplayScript(const Recording& recording);

  const std::vector<Event>& events() const { return recording_.events; }
  // Nothing for events of other kinds.
  const std::optional<QmiMessage>& message(size_t event) const { return messages_[event]; }

  // The replay has come to this event.
  void reach(size_t event) { position_ = event; }

  // The event that the request is; nothing when nobody expects it. The same content comes first,
  // then the same message of another content, both up to the parent's next request; then the same
  // content anywhere behind.
  std::optional<size_t> match(const QmiMessage& request);
  bool is_matched(size_t event) const { return matched_[event]; }

  // Whether the recording tells of a request between the position and `event` that has not come.
  bool is_early(size_t event) const;

  // The request that a response answers; nothing when there is none.
  std::optional<size_t> request_of(size_t response) const { return requests_[response]; }

  // A response with the transaction of the request that came.
  Bytes answer(size_t response, uint16_t transaction) const;

 private:
  bool is_open_request(size_t event) const;
  std::optional<size_t> find_request_of(size_t response) const;
  size_t next_parent_request() const;
  template <class Fits>
  std::optional<size_t> find(size_t begin, size_t end, Fits fits) const;

  const Recording& recording_;
  std::vector<std::optional<QmiMessage>> messages_;  // by event
  std::vector<std::optional<size_t>> requests_;
  std::vector<bool> matched_;
  size_t position_ = 0;
};

}  // namespace qorextctl

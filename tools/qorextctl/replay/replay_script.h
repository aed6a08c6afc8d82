// SPDX-License-Identifier: Apache-2.0
// A recording as the script of a replay: which recorded request each request of the daemon is, and
// the response to it.
#pragma once

#include "tools/qorextctl/recording/recording.h"

namespace qorextctl {

class ReplayScript {
 public:
  explicit ReplayScript(const Recording& recording);

  const std::vector<Event>& events() const { return recording_.events; }
  // Nothing when the event is not a message.
  const std::optional<QmiMessage>& message(size_t event) const { return messages_[event]; }

  // Sets the position of the replay.
  void reach(size_t event) { position_ = event; }

  // Returns the event of this request, or nothing when it is unexpected. Prefers the same content,
  // then the same message with other content, both up to the parent's next request; then the same
  // content after that.
  std::optional<size_t> match(const QmiMessage& request);
  bool is_matched(size_t event) const { return matched_[event]; }

  // Whether a request between the position and `event` has not been matched.
  bool is_early(size_t event) const;

  // The request of a response; nothing when there is none.
  std::optional<size_t> request_of(size_t response) const { return requests_[response]; }

  // The response with the transaction of the received request. A recorded transaction that differs
  // from its request's differs here too.
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

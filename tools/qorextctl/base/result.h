// SPDX-License-Identifier: Apache-2.0
// A value or an error.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace qorextctl {

// The values are the exit statuses of the program.
enum class Outcome : int {
  success = 0,
  refused = 1,    // a reply has a failure status
  usage = 2,      // the command is wrong; nothing was sent
  transport = 3,  // no reply in time, the daemon ended, or the modem is not reachable
  broken = 4,     // the program itself failed
};

struct Error {
  Outcome outcome;
  std::string message;  // one line, without a full stop
};

template <class T>
class Result {
 public:
  Result(T value) : content_(std::move(value)) {}
  Result(Error error) : content_(std::move(error)) {}

  explicit operator bool() const { return content_.index() == 0; }
  T& operator*() { return std::get<0>(content_); }
  const T& operator*() const { return std::get<0>(content_); }
  T* operator->() { return &std::get<0>(content_); }
  const T* operator->() const { return &std::get<0>(content_); }
  const Error& error() const { return std::get<1>(content_); }

 private:
  std::variant<T, Error> content_;
};

inline Error usage_error(std::string message) { return {Outcome::usage, std::move(message)}; }
inline Error transport_error(std::string message) {
  return {Outcome::transport, std::move(message)};
}

}  // namespace qorextctl

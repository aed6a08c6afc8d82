// SPDX-License-Identifier: Apache-2.0
// The objects that the callers' handles refer to. A handle is looked up and never dereferenced, so
// a stale or unknown one is an error without undefined behaviour. An object is destroyed when the
// last call that uses it has returned. All functions are thread-safe.
#pragma once

#include <memory>

namespace qmi_cci {

class Handle {
 public:
  virtual ~Handle() = default;
  // Starts the object's threads. Throws std::system_error when that fails.
  virtual void start() = 0;
  // Ends its threads and fails the calls that wait in it. Called once, also after a failed start().
  virtual void close() = 0;
  // Called when the process exits while the handle is open. The object's threads are still running.
  virtual void on_exit() {}
};

// Registers the object, stores its handle in `out` and starts it. Throws what start() throws; the
// object is then closed and `out` is null.
void install(const std::shared_ptr<Handle>& object, void** out);

// Closes the object and then removes the handle, so that a callback that is still running can use
// it. False when the handle is unknown or already being released.
bool release(void* handle);

// The object of a handle, or null when the handle is unknown.
std::shared_ptr<Handle> find_any(void* handle);

// The same; null also when the object is not a Kind.
template <typename Kind>
std::shared_ptr<Kind> find(void* handle) {
  return std::dynamic_pointer_cast<Kind>(find_any(handle));
}

}  // namespace qmi_cci

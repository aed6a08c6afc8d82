// SPDX-License-Identifier: Apache-2.0
// The objects behind the handles given to callers. A handle is only ever looked up, never followed,
// so that a stale or foreign one is refused instead of believed; an object lives on until the calls
// that use it have returned.
#pragma once

#include <memory>

namespace qmi_cci {

class Handle {
 public:
  virtual ~Handle() = default;
  // Starts the object's threads; throws when there are none to be had.
  virtual void start() = 0;
  // Ends its threads and fails the calls that wait in it. Called once.
  virtual void close() = 0;
  // The process exits while the handle is open; the object's threads go on for the time being.
  virtual void exiting() {}
};

// Makes the handle known, stores it in `out` and starts the object.
void install(const std::shared_ptr<Handle>& object, void** out);

// Closes the object and then forgets the handle: until then a callback that still runs may use it.
// False when there is no such handle or it is being released already.
bool release(void* handle);

// The object, or null when there is no such or it is of another kind.
std::shared_ptr<Handle> find_any(void* handle);

template <typename Kind>
std::shared_ptr<Kind> find(void* handle) {
  return std::dynamic_pointer_cast<Kind>(find_any(handle));
}

}  // namespace qmi_cci

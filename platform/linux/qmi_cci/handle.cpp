// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/handle.h"

#include <stdlib.h>

#include <mutex>
#include <unordered_map>

namespace qmi_cci {
namespace {

struct Entry {
  std::shared_ptr<Handle> object;
  bool is_closing = false;
};

// The mutex protects the map alone: start() and close() run without it, because they wait for
// threads that may look up handles themselves.
struct Registry {
  std::mutex mutex;
  std::unordered_map<void*, Entry> entries;
};

Registry& registry();

// Logs what the clients would log when they are released. Holds the mutex during on_exit(), which
// takes the lock of an indication queue. The order is safe: no code that holds that lock takes this
// one.
void report_exit() {
  std::lock_guard lock(registry().mutex);
  for (const auto& [handle, entry] : registry().entries) entry.object->on_exit();
}

Registry* make_registry() {
  atexit(report_exit);
  return new Registry;
}

// Never destroyed: the threads of clients that are open when the process exits are still running.
Registry& registry() {
  static Registry& instance = *make_registry();
  return instance;
}

void add(void* handle, const std::shared_ptr<Handle>& object) {
  std::lock_guard lock(registry().mutex);
  registry().entries[handle] = {object};
}

// Marks the handle as being released and returns its object. Null when another thread was first,
// so that one of two concurrent releases closes the object.
std::shared_ptr<Handle> begin_release(void* handle) {
  std::lock_guard lock(registry().mutex);
  auto found = registry().entries.find(handle);
  if (found == registry().entries.end() || found->second.is_closing) return nullptr;
  found->second.is_closing = true;
  return found->second.object;
}

void remove(void* handle) {
  std::lock_guard lock(registry().mutex);
  registry().entries.erase(handle);
}

}  // namespace

// The handle is known before start(), because the first callback may run, and use it, before
// start() has returned.
void install(const std::shared_ptr<Handle>& object, void** out) {
  void* handle = object.get();
  add(handle, object);
  *out = handle;
  try {
    object->start();
  } catch (...) {
    *out = nullptr;
    release(handle);
    throw;
  }
}

bool release(void* handle) {
  auto object = begin_release(handle);
  if (object == nullptr) return false;
  object->close();
  remove(handle);
  return true;
}

// Returns a reference, so that the object outlives a release by another thread.
std::shared_ptr<Handle> find_any(void* handle) {
  std::lock_guard lock(registry().mutex);
  auto found = registry().entries.find(handle);
  return found == registry().entries.end() ? nullptr : found->second.object;
}

}  // namespace qmi_cci

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

struct Registry {
  std::mutex mutex;
  std::unordered_map<void*, Entry> entries;
};

Registry& registry();

void announce_exit() {
  std::lock_guard lock(registry().mutex);
  for (const auto& [handle, entry] : registry().entries) entry.object->exiting();
}

Registry* make_registry() {
  atexit(announce_exit);
  return new Registry;
}

// Never destroyed: clients that are still open when the process exits have threads that go on.
Registry& registry() {
  static Registry& instance = *make_registry();
  return instance;
}

void add(void* handle, const std::shared_ptr<Handle>& object) {
  std::lock_guard lock(registry().mutex);
  registry().entries[handle] = {object};
}

// The object of a handle that is not being released yet; from now on it is.
std::shared_ptr<Handle> begin_release(void* handle) {
  std::lock_guard lock(registry().mutex);
  auto found = registry().entries.find(handle);
  if (found == registry().entries.end() || found->second.is_closing) return nullptr;
  found->second.is_closing = true;
  return found->second.object;
}

void forget(void* handle) {
  std::lock_guard lock(registry().mutex);
  registry().entries.erase(handle);
}

}  // namespace

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
  forget(handle);
  return true;
}

std::shared_ptr<Handle> find_any(void* handle) {
  std::lock_guard lock(registry().mutex);
  auto found = registry().entries.find(handle);
  return found == registry().entries.end() ? nullptr : found->second.object;
}

}  // namespace qmi_cci

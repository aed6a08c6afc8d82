// SPDX-License-Identifier: Apache-2.0
// A zero-filled buffer on the heap that holds one frame until it has been written.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <utility>

class Frame {
 public:
  explicit Frame(size_t size) : bytes_(static_cast<uint8_t*>(calloc(1, size))), size_(size) {}
  ~Frame() { free(bytes_); }

  Frame(Frame&& other) noexcept
      : bytes_(std::exchange(other.bytes_, nullptr)), size_(other.size_) {}
  Frame& operator=(Frame&&) = delete;

  // False when there was no memory for it.
  explicit operator bool() const { return bytes_ != nullptr; }

  uint8_t* at(size_t offset) { return bytes_ + offset; }
  const uint8_t* data() const { return bytes_; }
  size_t size() const { return size_; }

 private:
  uint8_t* bytes_;
  size_t size_;
};

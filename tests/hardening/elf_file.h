// SPDX-License-Identifier: Apache-2.0
// How a 64-bit ELF file was compiled and linked.
#pragma once

#include <elf.h>

#include <string>
#include <vector>

class ElfFile {
 public:
  // Throws std::runtime_error if the file is not a 64-bit ELF file.
  explicit ElfFile(const std::string& path);

  bool is_position_independent() const;
  bool has_full_relro() const;
  bool has_plain_stack() const;  // neither the stack nor another writable segment is executable
  bool has_stack_protector() const;
  bool has_fortified_calls() const;
  bool probes_large_frames() const;
  bool guards_indirect_branches() const;  // by marked targets, or by checked calls
  // Libraries are searched only in the system's folders and next to the file itself.
  bool has_safe_library_path() const;

 private:
  template <typename T>
  const T* at(size_t offset) const {
    return reinterpret_cast<const T*>(content_.data() + offset);
  }
  const Elf64_Ehdr& header() const { return *at<Elf64_Ehdr>(0); }
  std::vector<Elf64_Phdr> segments() const;
  const Elf64_Shdr* section(uint32_t type, const std::string& name) const;
  const char* text_at(const Elf64_Shdr& strings, size_t offset) const;
  std::vector<Elf64_Dyn> dynamic() const;
  uint64_t dynamic_flags(int64_t tag) const;
  std::vector<std::string> imports() const;
  std::vector<Elf64_Sym> functions() const;
  std::string name_of(const Elf64_Sym& function) const;
  bool marks_branch_targets() const;

  std::string content_;
};

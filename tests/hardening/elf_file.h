// SPDX-License-Identifier: Apache-2.0
// What a 64-bit ELF file tells of how it was compiled and linked.
#pragma once

#include <elf.h>

#include <string>
#include <vector>

class ElfFile {
 public:
  // Throws std::runtime_error when there is no such file.
  explicit ElfFile(const std::string& path);

  bool is_position_independent() const;
  bool has_full_relro() const;
  bool has_plain_stack() const;  // not executable, and nothing else writable is
  bool has_stack_protector() const;
  bool has_fortified_calls() const;
  bool probes_large_frames() const;
  bool guards_indirect_branches() const;  // by marked targets, or by checked calls
  // Every folder that libraries are searched in is the system's or next to the file itself.
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

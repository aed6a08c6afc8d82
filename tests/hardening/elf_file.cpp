// SPDX-License-Identifier: Apache-2.0
#include "tests/hardening/elf_file.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace {

using namespace std::string_view_literals;

// The instructions that probe a page of a large frame, and the valid targets of an indirect branch.
constexpr std::string_view kProbes[] = {
    "\x48\x83\x0C\x24\x00"sv,              // x86-64, GCC: or $0, (%rsp)
    "\x48\xC7\x04\x24\x00\x00\x00\x00"sv,  // x86-64, clang: mov $0, (%rsp)
    "\xFF\x03\x02\xF9"sv,                  // arm64: str xzr, [sp, 1024]
};
constexpr std::string_view kTargets[] = {
    "\xF3\x0F\x1E\xFA"sv,  // endbr64
    "\x5F\x24\x03\xD5"sv,  // bti c
    "\x3F\x23\x03\xD5"sv,  // paciasp
};
constexpr size_t kTargetSize = 4;

// Part of the names of functions with checked indirect calls.
constexpr char kCheckedTarget[] = ".cfi";

bool starts_with(const std::string& text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

bool is_safe_folder(const std::string& folder) {
  return folder == "$ORIGIN" || starts_with(folder, "$ORIGIN/../lib") ||
         starts_with(folder, "/usr/lib/") || starts_with(folder, "/lib/");
}

}  // namespace

ElfFile::ElfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (file) content_.resize(static_cast<size_t>(file.tellg()));
  file.seekg(0).read(content_.data(), static_cast<std::streamsize>(content_.size()));
  bool is_elf = content_.size() > sizeof(Elf64_Ehdr) && starts_with(content_, ELFMAG) &&
                content_[EI_CLASS] == ELFCLASS64;
  if (!is_elf) throw std::runtime_error(path + " is not a 64-bit ELF file");
}

std::vector<Elf64_Phdr> ElfFile::segments() const {
  const auto* first = at<Elf64_Phdr>(header().e_phoff);
  return {first, first + header().e_phnum};
}

const Elf64_Shdr* ElfFile::section(uint32_t type, const std::string& name) const {
  const auto* first = at<Elf64_Shdr>(header().e_shoff);
  const auto& names = first[header().e_shstrndx];
  const auto* end = first + header().e_shnum;
  const auto* found = std::find_if(first, end, [&](const Elf64_Shdr& each) {
    return each.sh_type == type && text_at(names, each.sh_name) == name;
  });
  return found == end ? nullptr : found;
}

const char* ElfFile::text_at(const Elf64_Shdr& strings, size_t offset) const {
  return at<char>(strings.sh_offset + offset);
}

std::vector<Elf64_Dyn> ElfFile::dynamic() const {
  const Elf64_Shdr* place = section(SHT_DYNAMIC, ".dynamic");
  if (place == nullptr) return {};
  const auto* first = at<Elf64_Dyn>(place->sh_offset);
  return {first, first + place->sh_size / sizeof *first};
}

uint64_t ElfFile::dynamic_flags(int64_t tag) const {
  for (const Elf64_Dyn& entry : dynamic()) {
    if (entry.d_tag == tag) return entry.d_un.d_val;
  }
  return 0;
}

std::vector<std::string> ElfFile::imports() const {
  const Elf64_Shdr* symbols = section(SHT_DYNSYM, ".dynsym");
  const Elf64_Shdr* names = section(SHT_STRTAB, ".dynstr");
  std::vector<std::string> imported;
  if (symbols == nullptr || names == nullptr) return imported;
  const auto* first = at<Elf64_Sym>(symbols->sh_offset);
  for (size_t i = 0; i < symbols->sh_size / sizeof *first; ++i) {
    if (first[i].st_shndx == SHN_UNDEF) imported.emplace_back(text_at(*names, first[i].st_name));
  }
  return imported;
}

std::vector<Elf64_Sym> ElfFile::functions() const {
  const Elf64_Shdr* symbols = section(SHT_SYMTAB, ".symtab");
  std::vector<Elf64_Sym> found;
  if (symbols == nullptr) return found;
  const auto* first = at<Elf64_Sym>(symbols->sh_offset);
  std::copy_if(first, first + symbols->sh_size / sizeof *first, std::back_inserter(found),
               [](const Elf64_Sym& each) { return ELF64_ST_TYPE(each.st_info) == STT_FUNC; });
  return found;
}

std::string ElfFile::name_of(const Elf64_Sym& function) const {
  return text_at(*section(SHT_STRTAB, ".strtab"), function.st_name);
}

bool ElfFile::is_position_independent() const {
  return header().e_type == ET_DYN && (dynamic_flags(DT_FLAGS_1) & DF_1_PIE) != 0;
}

bool ElfFile::has_full_relro() const {
  auto all = segments();
  bool is_relro = std::any_of(all.begin(), all.end(),
                              [](const Elf64_Phdr& each) { return each.p_type == PT_GNU_RELRO; });
  return is_relro && (dynamic_flags(DT_FLAGS_1) & DF_1_NOW) != 0;
}

bool ElfFile::has_plain_stack() const {
  constexpr uint32_t kBoth = PF_W | PF_X;
  auto all = segments();
  bool is_declared = std::any_of(all.begin(), all.end(),
                             [](const Elf64_Phdr& each) { return each.p_type == PT_GNU_STACK; });
  return is_declared && std::none_of(all.begin(), all.end(), [](const Elf64_Phdr& each) {
           return (each.p_flags & kBoth) == kBoth;
         });
}

bool ElfFile::has_stack_protector() const {
  auto names = imports();
  return std::find(names.begin(), names.end(), "__stack_chk_fail") != names.end();
}

bool ElfFile::has_fortified_calls() const {
  auto names = imports();
  return std::any_of(names.begin(), names.end(), [](const std::string& name) {
    constexpr std::string_view kEnd = "_chk";
    return name.size() > kEnd.size() && starts_with(name, "__") &&
           name.compare(name.size() - kEnd.size(), kEnd.size(), kEnd) == 0;
  });
}

bool ElfFile::probes_large_frames() const {
  const Elf64_Shdr* text = section(SHT_PROGBITS, ".text");
  std::string_view code(at<char>(text->sh_offset), text->sh_size);
  return std::any_of(std::begin(kProbes), std::end(kProbes), [code](std::string_view probe) {
    return code.find(probe) != std::string_view::npos;
  });
}

bool ElfFile::marks_branch_targets() const {
  const Elf64_Shdr* text = section(SHT_PROGBITS, ".text");
  for (const Elf64_Sym& function : functions()) {
    if (name_of(function) != "main") continue;
    std::string_view start(at<char>(function.st_value - text->sh_addr + text->sh_offset),
                           kTargetSize);
    return std::find(std::begin(kTargets), std::end(kTargets), start) != std::end(kTargets);
  }
  return false;
}

bool ElfFile::guards_indirect_branches() const {
  auto all = functions();
  return marks_branch_targets() || std::any_of(all.begin(), all.end(), [this](const auto& each) {
           return name_of(each).find(kCheckedTarget) != std::string::npos;
         });
}

bool ElfFile::has_safe_library_path() const {
  const Elf64_Shdr* names = section(SHT_STRTAB, ".dynstr");
  for (const Elf64_Dyn& entry : dynamic()) {
    if (entry.d_tag == DT_RPATH) return false;
    if (entry.d_tag != DT_RUNPATH) continue;
    std::istringstream folders(text_at(*names, entry.d_un.d_val));
    for (std::string folder; std::getline(folders, folder, ':');) {
      if (!is_safe_folder(folder)) return false;
    }
  }
  return true;
}

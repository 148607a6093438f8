#include "pe.h"

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>

namespace {

struct file_view {
  const unsigned char* bytes;
  size_t size;
};

// Copies the structure at `offset` into `*result`; false when it does not lie within the file.
template <class T>
bool read_at(const file_view& file, size_t offset, T* result) {
  if (offset > file.size || file.size - offset < sizeof(T)) return false;
  memcpy(result, file.bytes + offset, sizeof(T));
  return true;
}

// Where the byte at an address of the loaded image stands in the file; false when no section holds it.
bool offset_of(const std::vector<IMAGE_SECTION_HEADER>& sections, DWORD address, size_t* offset) {
  for (const IMAGE_SECTION_HEADER& section : sections) {
    if (address < section.VirtualAddress || address - section.VirtualAddress >= section.SizeOfRawData) continue;
    *offset = size_t{section.PointerToRawData} + (address - section.VirtualAddress);
    return true;
  }
  return false;
}

bool read_name(const file_view& file, size_t offset, std::string* name) {
  if (offset >= file.size) return false;
  const void* end = memchr(file.bytes + offset, 0, file.size - offset);
  if (!end) return false;
  name->assign(reinterpret_cast<const char*>(file.bytes + offset));
  return true;
}

bool read_exports(const file_view& file, const std::vector<IMAGE_SECTION_HEADER>& sections, DWORD address,
                  std::vector<std::string>* names) {
  IMAGE_EXPORT_DIRECTORY directory;
  size_t at = 0, table = 0;
  if (!offset_of(sections, address, &at) || !read_at(file, at, &directory)) return false;
  if (directory.NumberOfNames == 0) return true;
  if (!offset_of(sections, directory.AddressOfNames, &table)) return false;
  for (DWORD i = 0; i < directory.NumberOfNames; ++i) {
    DWORD name_address = 0;
    std::string name;
    if (!read_at(file, table + size_t{i} * sizeof(DWORD), &name_address)) return false;
    if (!offset_of(sections, name_address, &at) || !read_name(file, at, &name)) return false;
    names->push_back(name);
  }
  return true;
}

pe_kind read_view(const file_view& file, pe_image* image) {
  IMAGE_DOS_HEADER dos;
  DWORD signature = 0;
  IMAGE_FILE_HEADER header;
  if (!read_at(file, 0, &dos) || dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0) return pe_kind::not_pe;
  const size_t start = static_cast<size_t>(dos.e_lfanew);
  if (!read_at(file, start, &signature) || signature != IMAGE_NT_SIGNATURE) return pe_kind::not_pe;
  if (!read_at(file, start + sizeof signature, &header)) return pe_kind::not_pe;
  if (header.Machine == IMAGE_FILE_MACHINE_I386) return pe_kind::for_32_bit;
  if (header.Machine != IMAGE_FILE_MACHINE_AMD64) return pe_kind::for_other_processor;

  IMAGE_OPTIONAL_HEADER64 optional;
  const size_t optional_start = start + sizeof signature + sizeof header;
  if (!read_at(file, optional_start, &optional)) return pe_kind::not_pe;
  if (optional.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC) return pe_kind::not_pe;

  std::vector<IMAGE_SECTION_HEADER> sections(header.NumberOfSections);
  const size_t sections_start = optional_start + header.SizeOfOptionalHeader;
  for (size_t i = 0; i < sections.size(); ++i) {
    if (!read_at(file, sections_start + i * sizeof(IMAGE_SECTION_HEADER), &sections[i])) return pe_kind::not_pe;
  }

  pe_image result{};
  result.is_library = (header.Characteristics & IMAGE_FILE_DLL) != 0;
  result.uses_console = optional.Subsystem == IMAGE_SUBSYSTEM_WINDOWS_CUI;
  const DWORD exports = optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
  if (exports && !read_exports(file, sections, exports, &result.exports)) return pe_kind::not_pe;
  *image = result;
  return pe_kind::for_64_bit;
}

// Shows a file to `reader`; one that is empty, which cannot be mapped, as no bytes. One that cannot be read is not
// shown.
void look_into(const std::wstring& path, const std::function<void(const file_view&)>& reader) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  LARGE_INTEGER size{};
  GetFileSizeEx(file, &size);
  const HANDLE mapping = size.QuadPart ? CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr) : nullptr;
  const void* view = mapping ? MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0) : nullptr;
  if (view || !size.QuadPart) reader({static_cast<const unsigned char*>(view), static_cast<size_t>(size.QuadPart)});
  if (view) UnmapViewOfFile(view);
  if (mapping) CloseHandle(mapping);
  CloseHandle(file);
}

bool has_word(const file_view& file, const std::string& word, size_t stride) {
  const size_t length = word.size() * stride;
  for (size_t start = 0; start + length <= file.size; ++start) {
    size_t i = 0;
    while (i < word.size() && tolower(file.bytes[start + i * stride]) == word[i]) ++i;
    if (i == word.size()) return true;
  }
  return false;
}

}  // namespace

pe_kind read_pe(const std::wstring& path, pe_image* image) {
  pe_kind kind = pe_kind::unreadable;
  look_into(path, [&](const file_view& file) { kind = file.size ? read_view(file, image) : pe_kind::not_pe; });
  return kind;
}

bool file_mentions(const std::wstring& path, const char* word) {
  bool found = false;
  look_into(path, [&](const file_view& file) { found = has_word(file, word, 1) || has_word(file, word, 2); });
  return found;
}

bool exports_name(const pe_image& image, const char* name) {
  return std::find(image.exports.begin(), image.exports.end(), name) != image.exports.end();
}

// What can be learned of a program or library from its file, without loading it.
#pragma once

#include <string>
#include <vector>

enum class pe_kind { unreadable, not_pe, for_32_bit, for_other_processor, for_64_bit };

struct pe_image {
  bool is_library;
  bool uses_console;
  std::vector<std::string> exports;  // names only
};

// Reads the headers of the file at `path`. `*image` is filled for for_64_bit, which stands for the x64 processor, and
// left alone for anything else. A file cut short or with offsets that point outside it counts as not_pe.
pe_kind read_pe(const std::wstring& path, pe_image* image);

// True when the word stands in the file in any case of letters, a byte or two to a letter: a library that a program
// loads is named in one of these ways. False as well for a file that cannot be read.
bool file_mentions(const std::wstring& path, const char* word);

// True when `image` exports `name`.
bool exports_name(const pe_image& image, const char* name);

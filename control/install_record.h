// The record, in a program's folder, of the libraries that oswctl has placed there. A file is recognised by its
// contents and not by its name, so that a library that somebody else puts there later is left alone, and one of an
// older oswctl is still known.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Tells the contents of a file from any others that it could have by accident.
struct file_print {
  uint64_t size;
  uint64_t hash;
};

struct placed_file {
  std::string name;
  file_print print;
};

struct install_record {
  bool for_a_run;  // what is placed is to go with the last run in the folder
  std::vector<placed_file> placed;
};

inline constexpr wchar_t record_file[] = L"oswctl-installed.txt";

// The print of the file at `path`; false when it cannot be read.
bool take_print(const std::wstring& path, file_print* print);

// Reads the record of a folder. No file is an empty record. False when there is a file of that name which is no record.
bool read_record(const std::wstring& folder, install_record* record);

// Writes the record of a folder, in one step: an end in the middle leaves the old one. False, with GetLastError set,
// when it cannot be written.
bool write_record(const std::wstring& folder, const install_record& record);

// Deletes what a write that was ended in the middle has left. False when there was nothing, or it stays.
bool delete_unfinished_record(const std::wstring& folder);

// Deletes the record of a folder with all that belongs to it. False, with GetLastError set, when it stays.
bool delete_record(const std::wstring& folder);

// True when there is one of that name and with those contents.
bool has_placed(const std::vector<placed_file>& placed, const std::string& name, const file_print& print);

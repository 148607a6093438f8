// Trying libraries out, in a process of its own, which a library that crashes or hangs may take down.
#pragma once

#include <windows.h>

#include <string>

inline constexpr const char* private_entries[] = {"wglFastSwitchContextZ4", "wglGetGLContextZ4", "glViewportOffsetZ4",
                                                  "glDrawableSizeZ4"};

// Where contexts are not switched fast, that entry is missing for good reason: each part gets a thread.
inline constexpr DWORD missing_switch = 1;

// Exit statuses of the trying process. The mark in the upper half is there so that no status of another making is taken
// for one of these. The low four bits have one bit for each private entry that is missing.
enum : DWORD {
  probe_mark = 0x6F730000,
  probe_missing_mask = 0xF,
  probe_not_loaded = probe_mark | 0x10,
  probe_no_context = probe_mark | 0x20,
  probe_crashed = probe_mark | 0x40,
  probe_wrong_picture = probe_mark | 0x80,
  probe_no_functions = probe_mark | 0x100,
};

// What the trying process prints, a line each, is one of these words, a blank and the rest.
inline constexpr wchar_t told_host[] = L"host", told_version[] = L"version", told_renderer[] = L"renderer",
                         told_parts[] = L"parts", told_report[] = L"report";

// In the process that tries, the hidden command probe: draws by the driver at `driver`, or by the wrapper at `wrapper`
// over it if there is one. Gives one of the statuses, and prints what it finds.
int probe(const std::wstring& driver, const std::wstring& wrapper);

// The registry key of the options, as it is.
#pragma once

#include <windows.h>

#include <map>
#include <string>

struct option_value {
  DWORD type;
  std::string data;
};

inline bool operator==(const option_value& one, const option_value& other) {
  return one.type == other.type && one.data == other.data;
}

inline constexpr const wchar_t* option_names[] = {L"OSW_DW_DeadLoopWhenLoadDll",
                                                  L"OSW_DW_FakeAsOneMonitor",
                                                  L"OSW_DW_SplitOneMonitor",
                                                  L"OSW_DW_SplitParts",
                                                  L"OSW_DW_SplitTwoPartsHorizontal",
                                                  L"OSW_DW_UseSplitParentMethod",
                                                  L"OSW_DW_ForceUnusedChildWindowSize1X1",
                                                  L"OSW_DW_GLDispatchUseMtPath",
                                                  L"OSW_DW_UseAppThreadToQueryState"};

using option_values = std::map<std::wstring, option_value>;

bool options_key_exists();
option_values read_options();
void write_option(const std::wstring& name, DWORD type, const std::string& data);
void write_option(const std::wstring& name, DWORD number);

// The number of an option, or -1 where none is set.
long long option_number(const std::wstring& name);

void delete_options_key();

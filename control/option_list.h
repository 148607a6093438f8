// The options of the library, as its users know them.
#pragma once

#include <cstdint>
#include <string>

struct option {
  const wchar_t* name;
  bool is_flag;
  uint32_t fallback;        // the value that holds while none is set
  const wchar_t* accepted;  // the values that make sense, one digit each
  const wchar_t* meaning;
};

inline constexpr option option_list[] = {
    {L"OSW_DW_DeadLoopWhenLoadDll", true, 0, L"01", L"every program waits where it loads the library until this is 0"},
    {L"OSW_DW_FakeAsOneMonitor", true, 0, L"01", L"the whole desktop counts as one monitor"},
    {L"OSW_DW_SplitOneMonitor", true, 0, L"01", L"a single monitor is split into parts"},
    {L"OSW_DW_SplitParts", false, 4, L"124", L"how many parts a single monitor is split into: 1, 2 or 4"},
    {L"OSW_DW_SplitTwoPartsHorizontal", true, 1, L"01", L"two parts lie side by side (1) or one above the other (0)"},
    {L"OSW_DW_UseSplitParentMethod", true, 0, L"01",
     L"the window itself is divided evenly, wherever it stands, not along the edges of the parts"},
    {L"OSW_DW_ForceUnusedChildWindowSize1X1", true, 0, L"01",
     L"a part that the window does not touch keeps a child window of 1 by 1 pixels, not an empty one"},
    {L"OSW_DW_GLDispatchUseMtPath", true, 0, L"01",
     L"the threaded path always, even where the driver offers the fast switch"},
    {L"OSW_DW_UseAppThreadToQueryState", true, 1, L"01",
     L"on the threaded path, state is kept on the program's own thread too, to answer queries there"},
};

// The option of that name, in any case of letters; null when there is none.
const option* find_option(const std::wstring& name);

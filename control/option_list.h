// The options of the library, as its users know them.
#pragma once

#include <cstdint>
#include <string>

enum class option_kind { flag, number };

struct option {
  const wchar_t* name;
  option_kind kind;
  uint32_t fallback;        // the value that holds while none is set
  const wchar_t* accepted;  // the values that make sense, one digit each
  const wchar_t* meaning;
};

#define OSW_OPTION(name, kind, fallback, accepted, meaning) \
  {L"" #name, option_kind::kind, fallback, L"" accepted, L"" meaning},
inline constexpr option option_list[] = {
#include "startup/config/options.inc"
};
#undef OSW_OPTION

// The option of that name, in any case of letters; null when there is none.
const option* find_option(const std::wstring& name);

#include "option_list.h"

#include <cwchar>

const option* find_option(const std::wstring& name) {
  for (const option& one : option_list) {
    if (_wcsicmp(one.name, name.c_str()) == 0) return &one;
  }
  return nullptr;
}

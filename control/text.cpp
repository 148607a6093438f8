#include "text.h"

namespace {

std::string to_code_page(UINT code_page, const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(code_page, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(code_page, 0, text.data(), size, result.data(), length, nullptr, nullptr);
  return result;
}

std::wstring from_code_page(UINT code_page, const std::string& text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0);
  std::wstring result(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(code_page, 0, text.data(), size, result.data(), length);
  return result;
}

void print(DWORD stream, const std::wstring& text) {
  const HANDLE handle = GetStdHandle(stream);
  DWORD mode = 0, written = 0;
  if (GetConsoleMode(handle, &mode)) {
    WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    return;
  }
  const std::string bytes = to_utf8(text);
  WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

std::wstring one_line(std::wstring text) {
  while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' ')) text.pop_back();
  for (wchar_t& c : text) {
    if (c == L'\n' || c == L'\r') c = L' ';
  }
  return text;
}

}  // namespace

std::wstring from_utf8(const std::string& text) {
  return from_code_page(CP_UTF8, text);
}

std::wstring from_ansi(const std::string& text) {
  return from_code_page(CP_ACP, text);
}

std::string to_utf8(const std::wstring& text) {
  return to_code_page(CP_UTF8, text);
}

bool to_ansi(const std::wstring& text, std::string* result, UINT code_page) {
  // The way back shows a replaced character in every code page, UTF-8 included, where the conversion cannot report it.
  const std::string narrow = to_code_page(code_page, text);
  if (from_code_page(code_page, narrow) != text) return false;
  *result = narrow;
  return true;
}

void say(const std::wstring& line) {
  print(STD_OUTPUT_HANDLE, line + L"\n");
}

void complain(const std::wstring& sentence) {
  print(STD_ERROR_HANDLE, L"oswctl: " + one_line(sentence) + L"\n");
}

int fail(int status, const std::wstring& sentence) {
  complain(sentence);
  return status;
}

std::wstring describe(const RECT& area) {
  return std::to_wstring(area.right - area.left) + L" x " + std::to_wstring(area.bottom - area.top) + L" at " +
         std::to_wstring(area.left) + L"," + std::to_wstring(area.top);
}

std::wstring system_reason(DWORD error) {
  wchar_t text[512] = L"";
  FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text, 512, nullptr);
  const std::wstring reason = one_line(text);
  return L" (" + (reason.empty() ? L"Windows error " + std::to_wstring(error) : reason) + L")";
}

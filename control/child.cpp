#include "child.h"

namespace {

// Within quotes the C runtime reads backslashes as themselves, unless a quote follows them: then each pair is one.
void append_quoted(std::wstring* line, const std::wstring& argument) {
  *line += L'"';
  size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') line->append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    *line += c;
  }
  line->append(backslashes, L'\\');
  *line += L'"';
}

}  // namespace

std::wstring join_arguments(const std::wstring& program, const std::vector<std::wstring>& arguments) {
  // The first word is read by a simpler rule, in which a backslash is nothing special.
  std::wstring line = L"\"" + program + L"\"";
  for (const std::wstring& argument : arguments) {
    line += L' ';
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\f\r\"*?'`") == std::wstring::npos) {
      line += argument;
    } else {
      append_quoted(&line, argument);
    }
  }
  return line;
}

HANDLE start_child(const std::wstring& path, std::wstring command_line, wchar_t* environment, HANDLE output) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = output ? output : GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION information{};
  if (!CreateProcessW(path.c_str(), command_line.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                      environment, nullptr, &startup, &information)) {
    return nullptr;
  }
  CloseHandle(information.hThread);
  return information.hProcess;
}

void set_option_for_children(const wchar_t* option, int value) {
  SetEnvironmentVariableW(option, std::to_wstring(value).c_str());
}

#include "tool.h"

#include <algorithm>

#include "files.h"
#include "place.h"

static int started;

static std::wstring wide(const std::string& bytes) {
  std::wstring text(bytes.size(), L'\0');
  text.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()),
                                                      text.data(), static_cast<int>(text.size()))));
  return text;
}

static HANDLE open_output(const std::wstring& path) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

static running_tool start(std::wstring line, DWORD flags) {
  running_tool result{};
  // Outside of the place's folders, which tests look into.
  const std::wstring files = here().root + L"output-" + std::to_wstring(++started);
  result.out_file = files + L".out";
  result.err_file = files + L".err";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = open_output(result.out_file);
  startup.hStdError = open_output(result.err_file);
  PROCESS_INFORMATION information{};
  CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr, here().work.c_str(), &startup,
                 &information);
  CloseHandle(startup.hStdOutput);
  CloseHandle(startup.hStdError);
  if (information.hThread) CloseHandle(information.hThread);
  result.process = information.hProcess;
  return result;
}

static std::wstring tool_line(const std::wstring& line) {
  return quoted(here().tool + L"oswctl.exe") + L" " + line;
}

running_tool start_tool(const std::wstring& line) {
  return start(tool_line(line), 0);
}

running_tool start_program(const std::wstring& line) {
  return start(quoted(here().program) + L" " + line, 0);
}

outcome finish_tool(const running_tool& running) {
  outcome result{0xDEAD, L"", L""};
  if (WaitForSingleObject(running.process, 60000) != WAIT_OBJECT_0) TerminateProcess(running.process, 0xDEAD);
  WaitForSingleObject(running.process, 5000);
  GetExitCodeProcess(running.process, &result.status);
  CloseHandle(running.process);
  result.out = wide(read_bytes(running.out_file));
  result.err = wide(read_bytes(running.err_file));
  return result;
}

outcome run_tool(const std::wstring& line) {
  return finish_tool(start_tool(line));
}

running_tool start_tool_and_interrupt(const std::wstring& line, const std::wstring& ready) {
  return start(quoted(here().program) + L" interrupter " + quoted(ready) + L" " + tool_line(line), CREATE_NO_WINDOW);
}

bool is_one_sentence(const std::wstring& err) {
  return err.rfind(L"oswctl: ", 0) == 0 && err.back() == L'\n' && std::count(err.begin(), err.end(), L'\n') == 1;
}

bool contains(const std::wstring& text, const std::wstring& part) {
  return text.find(part) != std::wstring::npos;
}

std::wstring quoted(const std::wstring& text) {
  return L"\"" + text + L"\"";
}

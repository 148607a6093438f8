#include "roles.h"

#include <windows.h>

#include <cstring>

#include "control/files.h"
#include "control/install.h"
#include "draw_role.h"
#include "files.h"
#include "option_values.h"
#include "standin.h"

static std::string narrow(const std::wstring& text) {
  std::string bytes(text.size() * 3, '\0');
  bytes.resize(
      static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
  return bytes;
}

static long long write_arguments(const std::vector<std::wstring>& arguments) {
  std::string text;
  for (size_t i = 2; i < arguments.size(); ++i) text += narrow(arguments[i]) + "\n";
  write_bytes(arguments[1], text);
  return 0;
}

// The options as the library finds them: the environment's number in place of the registry's.
static std::map<std::wstring, long long> options_in_force() {
  std::map<std::wstring, long long> options;
  for (const auto& [name, value] : read_options()) options[name] = option_number(name);
  for (const wchar_t* name : option_names) {
    wchar_t value[32] = L"";
    if (GetEnvironmentVariableW(name, value, 32)) options[name] = _wtoi(value);
  }
  return options;
}

std::string state_report() {
  const HMODULE module = LoadLibraryW(L"opengl32.dll");
  const FARPROC address = module ? GetProcAddress(module, "standin_get_state") : nullptr;
  const standin_state* (*get_state)() = nullptr;
  memcpy(&get_state, &address, sizeof get_state);
  if (!get_state) return "no wrapper";
  const std::string path = get_state()->list_path;
  std::string text = get_state()->is_enabled ? "on" : "off";
  text += " [" + read_bytes(std::wstring(path.begin(), path.end())) + "]";
  for (const auto& [name, number] : options_in_force()) {
    text += " " + narrow(name).substr(7) + "=" + std::to_string(number);
  }
  char debug_break[16] = "";
  if (GetEnvironmentVariableA("Z4OSW_DEBUG_BREAK", debug_break, sizeof debug_break)) {
    text += " debug break " + std::string(debug_break);
  }
  return text;
}

static long long write_state(const std::wstring& file) {
  write_bytes(file, state_report());
  return 0;
}

static long long write_variable(const std::vector<std::wstring>& arguments) {
  wchar_t value[64] = L"none";
  GetEnvironmentVariableW(arguments[2].c_str(), value, 64);
  write_bytes(arguments[1], narrow(value));
  return 0;
}

static long long write_state_later(const std::vector<std::wstring>& arguments) {
  write_bytes(arguments[2], "");
  return wait_for_file(arguments[3]) ? write_state(arguments[1]) : 99;
}

static std::wstring interrupted_file;

static BOOL WINAPI note_interrupt(DWORD) {
  write_bytes(interrupted_file, "");
  return TRUE;
}

static BOOL WINAPI yield_to_interrupt(DWORD) {
  ExitProcess(33);
}

static long long wait_for_go(const std::vector<std::wstring>& arguments) {
  if (arguments[0] == L"stubborn") {
    interrupted_file = arguments[1] + L".interrupted";
    SetConsoleCtrlHandler(note_interrupt, TRUE);
  }
  if (arguments[0] == L"yielding") SetConsoleCtrlHandler(yield_to_interrupt, TRUE);
  write_bytes(arguments[1], "");
  if (!wait_for_file(arguments[2])) return 99;
  return _wtoi(arguments[3].c_str());
}

static BOOL WINAPI ignore_interrupt(DWORD) {
  return TRUE;
}

static long long interrupt(const std::vector<std::wstring>& arguments) {
  // The rest of the command line, as it was written, from the tool's quoted path on.
  const std::wstring whole = GetCommandLineW();
  std::wstring line = whole.substr(whole.find(arguments[2]) - 1);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION information{};
  SetConsoleCtrlHandler(ignore_interrupt, TRUE);
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &information))
    return 98;
  if (!wait_for_file(arguments[1])) return 97;
  // The program makes the file a moment before it waits.
  Sleep(200);
  if (!GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) return 96;
  DWORD status = 95;
  WaitForSingleObject(information.hProcess, 50000);
  GetExitCodeProcess(information.hProcess, &status);
  return status;
}

static int steps_left;

static void end_at_last_step() {
  if (--steps_left == 0) TerminateProcess(GetCurrentProcess(), 77);
}

static long long end_within(int (*command)(const std::wstring&), const std::vector<std::wstring>& arguments) {
  steps_left = _wtoi(arguments[1].c_str());
  after_file_step = end_at_last_step;
  return command(arguments[2]);
}

long long play_role(const std::vector<std::wstring>& arguments) {
  if (arguments.empty()) return -1;
  const std::wstring& role = arguments[0];
  if (role == L"arguments" && arguments.size() >= 2) return write_arguments(arguments);
  if (role == L"status" && arguments.size() == 2) return wcstoul(arguments[1].c_str(), nullptr, 10);
  if (role == L"state" && arguments.size() == 2) return write_state(arguments[1]);
  if (role == L"variable" && arguments.size() == 3) return write_variable(arguments);
  if (role == L"later" && arguments.size() == 4) return write_state_later(arguments);
  if ((role == L"wait" || role == L"stubborn" || role == L"yielding") && arguments.size() == 4)
    return wait_for_go(arguments);
  if (role == L"install" && arguments.size() == 3) return end_within(install_libraries, arguments);
  if (role == L"remove" && arguments.size() == 3) return end_within(remove_libraries, arguments);
  if (role == L"draw" && arguments.size() == 3) return draw_and_wait(arguments[1], arguments[2]);
  if (role == L"interrupter" && arguments.size() >= 3) return interrupt(arguments);
  return -1;
}

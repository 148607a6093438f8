#include "processes.h"

#include <cstdio>
#include <cstdlib>

#include "support/check.h"

namespace {

constexpr const char* options_key = "Software\\Z4graphics\\OGLSPANWrapper";

std::string program_path() {
  char path[MAX_PATH];
  const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  return std::string(path, length);
}

}  // namespace

std::string program_folder() {
  const std::string path = program_path();
  return path.substr(0, path.rfind('\\') + 1);
}

std::string program_name() {
  return program_path().substr(program_folder().size());
}

std::string read_file(const std::string& name) {
  std::string text;
  FILE* in = fopen(name.c_str(), "rb");
  if (!in) return text;
  char block[4096];
  for (size_t got; (got = fread(block, 1, sizeof block, in)) > 0;) text.append(block, got);
  fclose(in);
  return text;
}

void write_file(const std::string& name, const std::string& text) {
  FILE* out = fopen(name.c_str(), "wb");
  CHECK(out != nullptr);
  if (!out) return;
  CHECK_EQUAL(fwrite(text.data(), 1, text.size(), out), text.size());
  fclose(out);
}

std::string copy_of_this_program(const std::string& name, const std::string& folder) {
  const std::string copy = folder + name;
  CHECK(CopyFileA(program_path().c_str(), copy.c_str(), FALSE));
  return copy;
}

running_program start_program(const std::string& path, const std::string& arguments) {
  std::string line = "\"" + path + "\" " + arguments;
  STARTUPINFOA start = {};
  start.cb = sizeof start;
  PROCESS_INFORMATION started = {};
  fflush(stdout);
  const BOOL made =
      CreateProcessA(path.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &started);
  CHECK(made);
  if (made) CloseHandle(started.hThread);
  return {started.hProcess};
}

DWORD finish_program(running_program program, DWORD limit) {
  if (!program.process) return ran_too_long;
  DWORD status = ran_too_long;
  if (WaitForSingleObject(program.process, limit) == WAIT_OBJECT_0) {
    GetExitCodeProcess(program.process, &status);
  } else {
    TerminateProcess(program.process, status);
  }
  CloseHandle(program.process);
  return status;
}

DWORD run_program(const std::string& path, const std::string& arguments, DWORD limit) {
  return finish_program(start_program(path, arguments), limit);
}

void set_option(const char* name, DWORD value) {
  HKEY key;
  if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, options_key, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr) !=
      ERROR_SUCCESS) {
    fail(__FILE__, __LINE__, name, " cannot be set");
    return;
  }
  CHECK_EQUAL(RegSetValueExA(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value),
              ERROR_SUCCESS);
  RegCloseKey(key);
}

void reset_option(const char* name) {
  HKEY key;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, options_key, 0, KEY_WRITE, &key) != ERROR_SUCCESS) return;
  const LSTATUS status = RegDeleteValueA(key, name);
  CHECK(status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND);
  RegCloseKey(key);
}

DWORD option_in_force(const char* name, DWORD otherwise) {
  char own[16] = "";
  if (GetEnvironmentVariableA(name, own, sizeof own)) return static_cast<DWORD>(atoi(own));
  DWORD value = otherwise, size = sizeof value;
  const LSTATUS status = RegGetValueA(HKEY_LOCAL_MACHINE, options_key, name, RRF_RT_REG_DWORD, nullptr, &value, &size);
  return status == ERROR_SUCCESS ? value : otherwise;
}

#include "place.h"

#include <windows.h>

#include <cstring>
#include <vector>

#include "files.h"
#include "option_values.h"
#include "standins.h"

static place current;
static std::vector<HMODULE> held;

static std::wstring own_path() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  return path;
}

static std::wstring own_folder() {
  const std::wstring own = own_path();
  return own.substr(0, own.find_last_of(L'\\') + 1);
}

static std::wstring make_subfolder(const wchar_t* name) {
  const std::wstring path = current.root + name;
  make_folder(path);
  return path + L"\\";
}

const place& here() {
  return current;
}

void enter_place() {
  const std::wstring own = own_path(), beside = own_folder();
  current.root = beside + L"control-test\\";
  delete_folder(current.root);
  current.tool = make_subfolder(L"tool");
  current.app = make_subfolder(L"app");
  current.temp = make_subfolder(L"temp");
  current.work = make_subfolder(L"work");
  current.program = current.app + L"program.exe";
  // The tool with its debug information is big, and a second name costs less than a copy. This program itself is
  // running, and such a file's other names could not be deleted.
  CreateHardLinkW((current.tool + L"oswctl.exe").c_str(), (beside + L"oswctl.exe").c_str(), nullptr);
  CopyFileW(own.c_str(), current.program.c_str(), FALSE);
  for (const std::wstring& folder : {current.tool, current.app}) {
    write_bytes(folder + L"opengl32.dll", standin_wrapper_bytes());
    write_bytes(folder + L"opengl32sys.dll", standin_driver_bytes());
  }
  SetEnvironmentVariableW(L"TMP", current.temp.c_str());
  SetEnvironmentVariableW(L"TEMP", current.temp.c_str());
  delete_options_key();
}

void place_real_libraries(const std::wstring& folder) {
  for (const wchar_t* name : {L"opengl32.dll", L"opengl32sys.dll"}) {
    CopyFileW((own_folder() + name).c_str(), (folder + name).c_str(), FALSE);
  }
}

void leave_place() {
  for (const HMODULE module : held) FreeLibrary(module);
  held.clear();
  delete_options_key();
  delete_folder(current.root);
}

const standin_state* hold_wrapper(const std::wstring& folder) {
  const HMODULE module = LoadLibraryW((folder + L"opengl32.dll").c_str());
  const FARPROC address = module ? GetProcAddress(module, "standin_get_state") : nullptr;
  const standin_state* (*get_state)() = nullptr;
  memcpy(&get_state, &address, sizeof get_state);
  static const standin_state not_loaded = {-1, -1, -1, "", -1, 0, -1};
  if (!get_state) return &not_loaded;
  held.push_back(module);
  return get_state();
}

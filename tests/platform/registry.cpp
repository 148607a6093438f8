#include <cstring>
#include <map>
#include <set>

#include "platform/process.h"
#include "state.h"

namespace platform {

namespace {

// Names of keys and values have no case.
struct name_order {
  bool operator()(const std::string& first, const std::string& second) const {
    return _stricmp(first.c_str(), second.c_str()) < 0;
  }
};

struct value {
  DWORD type;
  std::vector<BYTE> data;
};
using key = std::map<std::string, value, name_order>;

struct open_key {
  std::string path;
};

std::mutex lock;
std::map<std::string, key, name_order> keys;
std::set<open_key*> open_keys;
std::vector<std::string> queries;

}  // namespace

void set_registry_key(const std::string& path) {
  const std::lock_guard guard(lock);
  keys[path];
}

void set_registry_value(const std::string& path, const std::string& name, DWORD type, const std::vector<BYTE>& data) {
  const std::lock_guard guard(lock);
  keys[path][name] = {type, data};
}

void set_registry_number(const std::string& path, const std::string& name, DWORD number) {
  std::vector<BYTE> data(sizeof number);
  std::memcpy(data.data(), &number, sizeof number);
  set_registry_value(path, name, REG_DWORD, data);
}

void remove_registry_value(const std::string& path, const std::string& name) {
  const std::lock_guard guard(lock);
  keys[path].erase(name);
}

int open_registry_keys() {
  const std::lock_guard guard(lock);
  return static_cast<int>(open_keys.size());
}

std::vector<std::string> registry_queries() {
  const std::lock_guard guard(lock);
  return queries;
}

void reset_registry() {
  const std::lock_guard guard(lock);
  for (open_key* opened : open_keys) delete opened;
  open_keys.clear();
  keys.clear();
  queries.clear();
}

}  // namespace platform

using namespace platform;

extern "C" LSTATUS RegOpenKeyA(HKEY root, LPCSTR path, PHKEY out) {
  if (ordered_to_fail("RegOpenKeyA")) return static_cast<LSTATUS>(GetLastError());
  const std::lock_guard guard(lock);
  if (root != HKEY_LOCAL_MACHINE || !keys.contains(path)) return ERROR_FILE_NOT_FOUND;
  auto* opened = new open_key{path};
  open_keys.insert(opened);
  *out = reinterpret_cast<HKEY>(opened);
  return ERROR_SUCCESS;
}

extern "C" LSTATUS RegQueryValueExA(HKEY opened, LPCSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
  if (ordered_to_fail("RegQueryValueExA")) return static_cast<LSTATUS>(GetLastError());
  const std::lock_guard guard(lock);
  auto* record = reinterpret_cast<open_key*>(opened);
  if (!open_keys.contains(record)) return ERROR_INVALID_HANDLE;
  queries.emplace_back(name);
  const key& values = keys[record->path];
  const auto found = values.find(name);
  if (found == values.end()) return ERROR_FILE_NOT_FOUND;
  const std::vector<BYTE>& bytes = found->second.data;
  const DWORD room = size == nullptr ? 0 : *size;
  if (type != nullptr) *type = found->second.type;
  if (size != nullptr) *size = static_cast<DWORD>(bytes.size());
  if (data == nullptr) return ERROR_SUCCESS;
  if (bytes.size() > room) return ERROR_MORE_DATA;
  if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
  return ERROR_SUCCESS;
}

extern "C" LSTATUS RegCloseKey(HKEY opened) {
  if (ordered_to_fail("RegCloseKey")) return static_cast<LSTATUS>(GetLastError());
  const std::lock_guard guard(lock);
  auto* record = reinterpret_cast<open_key*>(opened);
  if (open_keys.erase(record) == 0) return ERROR_INVALID_HANDLE;
  delete record;
  return ERROR_SUCCESS;
}

#include "look_up.h"

#include <set>

#include "module.h"
#include "names.h"
#include "support/check.h"

namespace {

// What any host of today has.
constexpr size_t least_found = 500;

using look_up = PROC WINAPI(const char* name);

struct asked {
  look_up *library, *default_of_library, *host;
};

void check(bool holds, const std::string& name, const char* words) {
  if (!holds) fail(__FILE__, __LINE__, name.c_str(), words);
}

const void* address(PROC entry) {
  return reinterpret_cast<const void*>(entry);
}

// What the application holds must lead through the library: for an export the very function, for all others one of the
// library's own.
void check_active(const asked& ask, const std::string& name, PROC hosts) {
  const PROC got = ask.library(name.c_str()), exported_one = GetProcAddress(wrapper(), name.c_str());
  if (hosts == nullptr) {
    check(got == nullptr, name, ": the host lacks it, the library has it");
    return;
  }
  check(got != nullptr, name, ": the host has it, the library lacks it");
  check(module_of(address(got)) == wrapper(), name, " is not the library's");
  if (exported_one) check(got == exported_one, name, " is not what is exported");
  check(ask.default_of_library(name.c_str()) == hosts, name, ", the default, is not the host's");
}

void check_bypassed(const asked& ask, const std::string& name, PROC hosts) {
  check(ask.library(name.c_str()) == hosts, name, " is not the host's");
  check(ask.default_of_library(name.c_str()) == hosts, name, ", the default, is not the host's");
  if (hosts) check(module_of(address(hosts)) == driver(), name, " is not the driver's");
}

// A function that the host has, and the library's lists do not: an application that is spread must not get past it.
void check_unlisted(const asked& ask, bool active) {
  const char* const name = "glBufferStorage";
  CHECK(ask.host(name) != nullptr);
  CHECK_EQUAL(ask.library(name) == nullptr, active);
}

}  // namespace

void check_look_ups(bool active) {
  const asked ask = {exported<look_up>("wglGetProcAddress"), exported<look_up>("wglGetDefaultProcAddress"),
                     reinterpret_cast<look_up*>(address(GetProcAddress(driver(), "wglGetProcAddress")))};
  std::set<PROC> found;
  for (const std::string& name : all_names()) {
    const PROC hosts = ask.host(name.c_str());
    if (active) {
      check_active(ask, name, hosts);
    } else {
      check_bypassed(ask, name, hosts);
    }
    if (const PROC got = ask.library(name.c_str())) {
      check(found.insert(got).second, name, " is another function too");
      check(ask.library(name.c_str()) == got, name, " is another the second time");
    }
  }
  printf("%u of %u names\n", static_cast<unsigned>(found.size()), static_cast<unsigned>(all_names().size()));
  CHECK(found.size() > least_found);
  for (const char* unknown : {"glNoSuch", "wglNoSuch", "GLCLEAR", "glclear", "glClear ", "NoSuch", ""}) {
    check(ask.library(unknown) == nullptr, unknown, " has an address");
  }
  check_unlisted(ask, active);
}

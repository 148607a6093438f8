#include <windows.h>

#include <vector>

#include "files.h"
#include "place.h"
#include "standins.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static std::wstring wrapper() {
  return here().work + L"opengl32.dll";
}
static std::wstring driver() {
  return here().work + L"opengl32sys.dll";
}
static std::wstring record() {
  return here().work + L"oswctl-installed.txt";
}

// The tool is asked about its current folder, here().work, which is empty at first.
static outcome install() {
  return run_tool(L"install .");
}
static outcome remove() {
  return run_tool(L"remove .");
}

static void check_refused(outcome (*command)(), const wchar_t* part) {
  const auto before = folder_contents(here().work);
  const outcome result = command();
  CHECK_EQUAL(result.status, 1);
  CHECK_EQUAL(result.out, L"");
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, part));
  CHECK(folder_contents(here().work) == before);
}

// What an oswctl of another version brings: the same libraries, but for bytes behind their end.
static void become_another_version(const std::string& version) {
  write_bytes(here().tool + L"opengl32.dll", standin_wrapper_bytes() + version);
  write_bytes(here().tool + L"opengl32sys.dll", standin_driver_bytes() + version);
}

static void check_installed(const std::string& version) {
  CHECK(read_bytes(wrapper()) == standin_wrapper_bytes() + version);
  CHECK(read_bytes(driver()) == standin_driver_bytes() + version);
  CHECK_EQUAL(static_cast<long long>(folder_contents(here().work).size()), 3);
}

static void places_and_takes_away() {
  write_bytes(here().work + L"program.exe", "not touched");
  CHECK_EQUAL(install().status, 0);
  CHECK(read_bytes(wrapper()) == standin_wrapper_bytes());
  CHECK(read_bytes(driver()) == standin_driver_bytes());
  CHECK_EQUAL(static_cast<long long>(folder_contents(here().work).size()), 4);
  CHECK_EQUAL(install().status, 0);
  CHECK_EQUAL(remove().status, 0);
  const std::map<std::wstring, std::string> left = {{L"program.exe", "not touched"}};
  CHECK(folder_contents(here().work) == left);
}

static void takes_away_nothing_that_it_did_not_place() {
  check_refused(remove, L"placed nothing");
  // The very same files, put there by hand, are still somebody else's.
  write_bytes(wrapper(), standin_wrapper_bytes());
  write_bytes(driver(), standin_driver_bytes());
  check_refused(remove, L"placed nothing");
  check_refused(install, L"not placed by oswctl");
}

static void places_over_nothing_that_it_did_not_place() {
  write_bytes(wrapper(), "somebody's");
  check_refused(install, L"opengl32.dll is there already");
  DeleteFileW(wrapper().c_str());
  write_bytes(driver(), "somebody's");
  check_refused(install, L"opengl32sys.dll is there already");
  DeleteFileW(driver().c_str());
  make_folder(driver());
  check_refused(install, L"opengl32sys.dll is there already");
}

static void survives_an_upgrade() {
  CHECK_EQUAL(install().status, 0);
  become_another_version("2");
  CHECK_EQUAL(install().status, 0);
  check_installed("2");
  // The record is all that the next version has to go by.
  become_another_version("three");
  CHECK_EQUAL(remove().status, 0);
  CHECK(folder_contents(here().work).empty());
}

static void leaves_what_was_put_in_its_place() {
  CHECK_EQUAL(install().status, 0);
  write_bytes(wrapper(), "somebody's");
  check_refused(install, L"opengl32.dll is there already");
  const outcome result = remove();
  CHECK_EQUAL(result.status, 1);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, L"opengl32.dll is not the file that oswctl placed"));
  const std::map<std::wstring, std::string> left = {{L"opengl32.dll", "somebody's"}};
  CHECK(folder_contents(here().work) == left);
}

static void takes_away_what_is_left() {
  CHECK_EQUAL(install().status, 0);
  DeleteFileW(driver().c_str());
  CHECK_EQUAL(remove().status, 0);
  CHECK(folder_contents(here().work).empty());
}

static void puts_a_lost_library_back() {
  CHECK_EQUAL(install().status, 0);
  DeleteFileW(driver().c_str());
  CHECK_EQUAL(install().status, 0);
  check_installed("");
}

static void trusts_no_record_but_its_own() {
  CHECK_EQUAL(install().status, 0);
  const std::string good = read_bytes(record());
  for (const std::string& bad : {std::string("notes of mine"), std::string(), good.substr(0, good.size() - 3),
                                 good + "opengl32.dll 5\r\n", good + std::string(5000, 'x')}) {
    write_bytes(record(), bad);
    check_refused(install, L"oswctl-installed.txt is not of oswctl's making");
    check_refused(remove, L"oswctl-installed.txt is not of oswctl's making");
  }
}

// The record is written before the first file and holds both versions until the last: what an end in the middle leaves.
static void goes_on_after_an_end_in_the_middle() {
  CHECK_EQUAL(install().status, 0);
  const std::string old_record = read_bytes(record());
  become_another_version("2");
  CHECK_EQUAL(install().status, 0);
  const std::string new_record = read_bytes(record());
  const size_t head = old_record.find('\n') + 1;
  write_bytes(record(), old_record + new_record.substr(head));
  write_bytes(driver(), standin_driver_bytes());
  const auto halfway = folder_contents(here().work);

  CHECK_EQUAL(install().status, 0);
  check_installed("2");
  for (const auto& [name, bytes] : halfway) write_bytes(here().work + name, bytes);
  CHECK_EQUAL(remove().status, 0);
  CHECK(folder_contents(here().work).empty());
}

using folder_state = std::map<std::wstring, std::string>;

static void restore(const folder_state& state) {
  for (const auto& [name, bytes] : folder_contents(here().work)) DeleteFileW((here().work + name).c_str());
  for (const auto& [name, bytes] : state) write_bytes(here().work + name, bytes);
}

// All that an end can leave of an install over `before`, whose record is to hold both versions: half a library under a
// name of its own, a whole one in its place, the driver first.
static std::vector<folder_state> ends_of_an_install(const folder_state& before, const std::string& version) {
  const std::pair<std::wstring, std::string> libraries[] = {{L"opengl32sys.dll", standin_driver_bytes() + version},
                                                            {L"opengl32.dll", standin_wrapper_bytes() + version}};
  std::vector<folder_state> ends = {before};
  ends.front()[L"oswctl-installed.txt.new"] = "Placed by";
  ends.push_back(before);
  for (const auto& [name, bytes] : libraries) {
    folder_state state = ends.back();
    state[name + L".oswctl-new"] = bytes.substr(0, bytes.size() / 2);
    ends.push_back(state);
    state.erase(name + L".oswctl-new");
    state[name] = bytes;
    ends.push_back(state);
  }
  return ends;
}

static void check_goes_on_after(const std::vector<folder_state>& ends, const std::string& version) {
  for (const folder_state& end : ends) {
    restore(end);
    CHECK_EQUAL(install().status, 0);
    check_installed(version);
    restore(end);
    CHECK_EQUAL(remove().status, 0);
    CHECK(folder_contents(here().work).empty());
  }
}

static void goes_on_after_an_end_at_any_step() {
  // Before there is a record.
  check_goes_on_after({{{L"oswctl-installed.txt.new", "Placed by"}}}, "");

  CHECK_EQUAL(install().status, 0);
  const folder_state first = folder_contents(here().work);
  check_goes_on_after(ends_of_an_install({{L"oswctl-installed.txt", first.at(L"oswctl-installed.txt")}}, ""), "");

  restore(first);
  become_another_version("2");
  CHECK_EQUAL(install().status, 0);
  const std::string new_record = read_bytes(record());
  folder_state both = first;
  both[L"oswctl-installed.txt"] += new_record.substr(new_record.find('\n') + 1);
  check_goes_on_after(ends_of_an_install(both, "2"), "2");
}

// What stands in the folder under the libraries' names is whole, and the wrapper never without the driver.
static void check_usable(const folder_state& state) {
  for (const auto& [name, bytes] :
       {std::pair(L"opengl32.dll", standin_wrapper_bytes()), std::pair(L"opengl32sys.dll", standin_driver_bytes())}) {
    const auto found = state.find(name);
    CHECK(found == state.end() || found->second == bytes || found->second == bytes + "2");
  }
  CHECK(state.count(L"opengl32.dll") <= state.count(L"opengl32sys.dll"));
}

// Ends the command over `before` after each of its steps, and has it taken up by either command from there. Gives how
// many steps there are.
static int check_ends_within(const wchar_t* command, const folder_state& before, const std::string& version) {
  for (int steps = 1;; ++steps) {
    restore(before);
    const std::wstring line = command + (L" " + std::to_wstring(steps)) + L" .";
    const DWORD status = finish_tool(start_program(line)).status;
    if (status != 77) {
      CHECK_EQUAL(status, 0);
      return steps - 1;
    }
    const folder_state state = folder_contents(here().work);
    check_usable(state);
    CHECK_EQUAL(install().status, 0);
    check_installed(version);
    restore(state);
    // Where there is no trace, there is nothing to take away.
    CHECK_EQUAL(remove().status, state.empty() ? 1 : 0);
    CHECK(folder_contents(here().work).empty());
  }
}

static void become_another_version_everywhere(const std::string& version) {
  become_another_version(version);
  for (const wchar_t* name : {L"opengl32.dll", L"opengl32sys.dll"}) {
    write_bytes(here().app + name, read_bytes(here().tool + name));
  }
}

static void survives_an_end_after_every_step_of_install() {
  CHECK(check_ends_within(L"install", {}, "") >= 12);
  CHECK_EQUAL(install().status, 0);
  const folder_state first = folder_contents(here().work);
  become_another_version_everywhere("2");
  CHECK(check_ends_within(L"install", first, "2") >= 12);
}

static void survives_an_end_after_every_step_of_remove() {
  CHECK_EQUAL(install().status, 0);
  CHECK(check_ends_within(L"remove", folder_contents(here().work), "") >= 4);
}

// One after the other, whatever their order: each finds a folder that is whole.
static void serves_several_at_once() {
  for (int round = 0; round < 3; ++round) {
    std::vector<running_tool> runs;
    for (int i = 0; i < 5; ++i) runs.push_back(start_tool(L"install ."));
    for (const running_tool& running : runs) {
      const outcome result = finish_tool(running);
      CHECK_EQUAL(result.status, 0);
      CHECK_EQUAL(result.err, L"");
    }
    check_installed("");
    runs = {start_tool(L"remove ."), start_tool(L"install ."), start_tool(L"remove ."), start_tool(L"install .")};
    for (const running_tool& running : runs) {
      const outcome result = finish_tool(running);
      if (result.status != 0)
        CHECK(is_one_sentence(result.err) && contains(result.err, L"oswctl has placed nothing in"));
    }
    if (!folder_contents(here().work).empty()) check_installed("");
    restore({});
  }
}

static void leaves_libraries_in_use() {
  CHECK_EQUAL(install().status, 0);
  const HMODULE in_use = LoadLibraryW(wrapper().c_str());
  CHECK(in_use != nullptr);
  // Nothing is to be done about the same version.
  CHECK_EQUAL(install().status, 0);
  become_another_version("2");
  const outcome result = install();
  CHECK_EQUAL(result.status, 1);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, L"opengl32.dll"));
  CHECK(read_bytes(wrapper()) == standin_wrapper_bytes());
  FreeLibrary(in_use);
  CHECK_EQUAL(install().status, 0);
  check_installed("2");
}

static void says_what_is_missing_beside_it() {
  DeleteFileW((here().tool + L"opengl32sys.dll").c_str());
  check_refused(install, L"opengl32sys.dll is missing");
  write_bytes(here().tool + L"opengl32sys.dll", with_machine(standin_driver_bytes(), 0x14C));
  check_refused(install, L"32-bit");
  write_bytes(here().tool + L"opengl32sys.dll", standin_wrapper_bytes());
  check_refused(install, L"the span wrapper itself");
}

// A program of another kind than the libraries cannot load them.
static void refuses_a_folder_of_another_kind() {
  const std::string program = read_bytes(here().program);
  // Headers alone, without a word of OpenGL.
  const std::string headers = program.substr(0, 1024), named = headers + "imports OPENGL32.dll";
  const auto check_refused_for = [](const wchar_t* part) {
    const auto before = folder_contents(here().work);
    const outcome result = install();
    CHECK_EQUAL(result.status, 2);
    CHECK(is_one_sentence(result.err));
    CHECK(contains(result.err, part));
    CHECK(folder_contents(here().work) == before);
    const outcome checked = run_tool(L"check");
    CHECK_EQUAL(checked.status, 1);
    CHECK(contains(checked.out, part));
  };
  write_bytes(here().work + L"old.exe", with_machine(headers, 0x14C));
  check_refused_for(L"old.exe is a 32-bit program");
  write_bytes(here().work + L"old.exe", with_machine(headers, 0xAA64));
  check_refused_for(L"old.exe is a program for another kind of processor");

  // An uninstaller, say, that never looks for the libraries.
  write_bytes(here().work + L"program.exe", program);
  CHECK_EQUAL(install().status, 0);
  CHECK_EQUAL(remove().status, 0);
  write_bytes(here().work + L"old.exe", with_machine(named, 0x14C));
  check_refused_for(L"old.exe is a 32-bit program");
  write_bytes(here().work + L"old.exe",
              with_machine(headers + std::string("o\0p\0e\0n\0g\0l\0003\0002\0", 16), 0xAA64));
  check_refused_for(L"old.exe is a program for another kind of processor");
}

std::vector<test> install_tests() {
  return {{"places_and_takes_away", places_and_takes_away},
          {"takes_away_nothing_that_it_did_not_place", takes_away_nothing_that_it_did_not_place},
          {"places_over_nothing_that_it_did_not_place", places_over_nothing_that_it_did_not_place},
          {"survives_an_upgrade", survives_an_upgrade},
          {"leaves_what_was_put_in_its_place", leaves_what_was_put_in_its_place},
          {"takes_away_what_is_left", takes_away_what_is_left},
          {"puts_a_lost_library_back", puts_a_lost_library_back},
          {"trusts_no_record_but_its_own", trusts_no_record_but_its_own},
          {"goes_on_after_an_end_in_the_middle", goes_on_after_an_end_in_the_middle},
          {"goes_on_after_an_end_at_any_step", goes_on_after_an_end_at_any_step},
          {"survives_an_end_after_every_step_of_install", survives_an_end_after_every_step_of_install},
          {"survives_an_end_after_every_step_of_remove", survives_an_end_after_every_step_of_remove},
          {"serves_several_at_once", serves_several_at_once},
          {"leaves_libraries_in_use", leaves_libraries_in_use},
          {"says_what_is_missing_beside_it", says_what_is_missing_beside_it},
          {"refuses_a_folder_of_another_kind", refuses_a_folder_of_another_kind}};
}

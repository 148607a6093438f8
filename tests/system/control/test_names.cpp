#include <windows.h>

#include <vector>

#include "control/app_list.h"
#include "files.h"
#include "place.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

// Letters of several scripts, no one code page has all of them.
static const std::wstring foreign = L"\u30BD\u30D5\u30C8 \u0416\u00E4";

static std::wstring foreign_folder() {
  const std::wstring folder = here().root + foreign;
  make_folder(folder);
  return folder + L"\\";
}

static std::wstring state_of(const std::wstring& line, const std::wstring& program) {
  const std::wstring file = here().root + L"state";
  DeleteFileW(file.c_str());
  const outcome result = run_tool(line + L" " + quoted(program) + L" state " + quoted(file));
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  const std::string bytes = read_bytes(file);
  return std::wstring(bytes.begin(), bytes.end());
}

static void serves_a_folder_of_any_script() {
  const std::wstring folder = foreign_folder(), program = folder + L"program.exe";
  CopyFileW(here().program.c_str(), program.c_str(), FALSE);
  // Without the backslash that would save the quote.
  const std::wstring named = quoted(folder.substr(0, folder.size() - 1));
  const outcome installed = run_tool(L"install " + named);
  CHECK_EQUAL(installed.status, 0);
  CHECK(contains(installed.out, foreign));
  CHECK_EQUAL(state_of(L"run --", program), L"on [program.exe\r\n]");
  CHECK_EQUAL(run_tool(L"remove " + named).status, 0);
  CHECK_EQUAL(static_cast<long long>(folder_contents(folder).size()), 1);
}

static void checks_a_folder_of_any_script() {
  const std::wstring folder = foreign_folder();
  place_real_libraries(folder);
  const outcome result = run_tool(L"check " + quoted(folder));
  CHECK_EQUAL(result.status, 0);
  CHECK(contains(result.out, folder + L"opengl32sys.dll is a system library"));
  CHECK(contains(result.out, L"parts, a thread for each part, the picture is right"));
}

// The library takes a list's path in the code page; the short form of the path is in any.
static void takes_a_list_in_a_folder_of_any_script() {
  const std::wstring list = foreign_folder() + L"list.txt";
  write_bytes(list, "program.exe other.exe");
  CHECK_EQUAL(state_of(L"run --list " + quoted(list) + L" --", here().program), L"on [program.exe other.exe]");
}

static void works_with_temporary_files_in_a_folder_of_any_script() {
  SetEnvironmentVariableW(L"TMP", foreign_folder().c_str());
  SetEnvironmentVariableW(L"TEMP", foreign_folder().c_str());
  CHECK_EQUAL(state_of(L"run --", here().program), L"on [program.exe\r\n]");
  CHECK(folder_contents(foreign_folder()).empty());
}

// The library compares names in the code page, where this one has none.
static void refuses_a_name_that_the_code_page_lacks() {
  const std::wstring program = here().app + foreign + L".exe";
  CopyFileW(here().program.c_str(), program.c_str(), FALSE);
  const outcome result = run_tool(L"run -- " + quoted(program) + L" status 0");
  CHECK_EQUAL(result.status, 2);
  CHECK(is_one_sentence(result.err));
  CHECK(contains(result.err, foreign));
  CHECK(contains(result.err, L"code page"));
}

// In the code page of a Japanese machine the second byte of some letters is a backslash, as it is of this one.
static void refuses_a_name_that_ends_as_a_backslash_in_the_code_page() {
  constexpr UINT japanese = 932;
  const auto name_of = [](const std::wstring& name, std::wstring* problem) {
    std::string listed;
    return listed_name({L"", L"", name, false}, &listed, problem, japanese) ? listed : "";
  };
  std::wstring problem;
  CHECK(name_of(L"\u30BD.exe", &problem).empty());
  CHECK(contains(problem, L"\u30BD.exe has a letter in its name that ends as a backslash in this machine's code page"));
  CHECK(contains(problem, L"; rename the program"));
  problem.clear();
  CHECK(name_of(L"\u30D5\u30C8.exe", &problem) == "\x83\x74\x83\x67.exe");
  CHECK_EQUAL(problem, L"");
}

// The library has no room for the path, whether such a folder can be made on the machine or not.
static void refuses_what_is_too_long() {
  std::vector<std::wstring> folders = {here().work};
  for (int i = 0; i < 6; ++i) folders.push_back(folders.back() + std::wstring(50, L'x') + L"\\");
  const std::wstring folder = folders.back(), program = folder + L"program.exe";
  const std::wstring named = quoted(folder.substr(0, folder.size() - 1));
  const auto check_refused = [](const std::wstring& line) {
    const outcome result = run_tool(line);
    CHECK_EQUAL(result.status, 2);
    CHECK_EQUAL(result.out, L"");
    CHECK(is_one_sentence(result.err));
    CHECK(contains(result.err, L"longer than 259 characters"));
  };
  for (int round = 0; round < 2; ++round) {
    check_refused(L"run -- " + quoted(program) + L" status 0");
    check_refused(L"install " + named);
    check_refused(L"check " + named);
    check_refused(L"remove " + named);
    for (const std::wstring& one : folders) CreateDirectoryW(one.c_str(), nullptr);
    CopyFileW(here().program.c_str(), program.c_str(), FALSE);
  }
  DeleteFileW(program.c_str());
  // What deletes the other folders is not made for such a path.
  for (auto one = folders.rbegin(); one + 1 != folders.rend(); ++one) RemoveDirectoryW(one->c_str());
}

std::vector<test> name_tests() {
  return {
      {"serves_a_folder_of_any_script", serves_a_folder_of_any_script},
      {"checks_a_folder_of_any_script", checks_a_folder_of_any_script},
      {"takes_a_list_in_a_folder_of_any_script", takes_a_list_in_a_folder_of_any_script},
      {"works_with_temporary_files_in_a_folder_of_any_script", works_with_temporary_files_in_a_folder_of_any_script},
      {"refuses_a_name_that_the_code_page_lacks", refuses_a_name_that_the_code_page_lacks},
      {"refuses_a_name_that_ends_as_a_backslash_in_the_code_page",
       refuses_a_name_that_ends_as_a_backslash_in_the_code_page},
      {"refuses_what_is_too_long", refuses_what_is_too_long}};
}

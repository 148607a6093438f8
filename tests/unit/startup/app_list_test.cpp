// The list of applications that the wrapper is switched on for.
#include "startup/config/app_list.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/process.h"
#include "support/allocation.h"

namespace {

struct app_list_test : testing::Test {
  void SetUp() override {
    platform::reset();
    path = testing::TempDir() + "osw_app_list_" + std::to_string(getpid());
  }
  void TearDown() override { std::remove(path.c_str()); }

  bool listed(const std::string& text, const char* name) const {
    std::ofstream(path) << text;
    return __osw_app_in_list(path.c_str(), name);
  }

  int open_files() const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code error;
      count += std::filesystem::read_symlink(entry, error) == path;
    }
    return count;
  }

  std::string path;
};

TEST_F(app_list_test, words_are_separated_by_any_white_space) {
  EXPECT_TRUE(listed("a.exe b.exe\tc.exe\r\n\n  d.exe", "a.exe"));
  for (const char* name : {"b.exe", "c.exe", "d.exe"}) {
    EXPECT_TRUE(listed("a.exe b.exe\tc.exe\r\n\n  d.exe", name)) << name;
  }
  EXPECT_FALSE(listed("a.exe b.exe", "c.exe"));
  EXPECT_EQ(open_files(), 0);
}

TEST_F(app_list_test, case_does_not_count) {
  EXPECT_TRUE(listed("MyApp.EXE", "myapp.exe"));
  EXPECT_TRUE(listed("myapp.exe", "MYAPP.EXE"));
}

TEST_F(app_list_test, the_whole_word_counts) {
  EXPECT_FALSE(listed("myapp.exe2", "myapp.exe"));
  EXPECT_FALSE(listed("app.exe", "myapp.exe"));
  EXPECT_FALSE(listed("C:\\dir\\myapp.exe", "myapp.exe"));
}

TEST_F(app_list_test, a_name_with_a_blank_is_two_words) {
  EXPECT_FALSE(listed("my app.exe", "my app.exe"));
  EXPECT_TRUE(listed("my app.exe", "app.exe"));
}

TEST_F(app_list_test, there_are_no_comments) {
  EXPECT_TRUE(listed("# app.exe", "app.exe"));
}

TEST_F(app_list_test, an_empty_list_matches_nothing_and_stays_open) {
  EXPECT_FALSE(listed("", "app.exe"));
  EXPECT_EQ(open_files(), 1);
  EXPECT_FALSE(listed(" \n\t ", "app.exe"));
  EXPECT_EQ(open_files(), 2);
}

TEST_F(app_list_test, a_missing_list_matches_nothing) {
  EXPECT_FALSE(__osw_app_in_list(path.c_str(), "app.exe"));
  EXPECT_FALSE(__osw_app_in_list("", "app.exe"));
}

// Root may write what is read-only; so the test goes without those rights.
TEST_F(app_list_test, a_read_only_list_matches_nothing) {
  std::ofstream(path) << "app.exe";
  chmod(path.c_str(), 0444);
  const uid_t user = geteuid();
  if (user == 0) {
    ASSERT_EQ(seteuid(65534), 0);
  }
  EXPECT_EQ(access(path.c_str(), R_OK), 0);
  EXPECT_FALSE(__osw_app_in_list(path.c_str(), "app.exe"));
  if (user == 0) {
    ASSERT_EQ(seteuid(user), 0);
  }
  // The change of user has closed the process to the leak checker.
  prctl(PR_SET_DUMPABLE, 1);
  EXPECT_EQ(open_files(), 0);
}

TEST_F(app_list_test, a_word_of_259_characters_is_whole) {
  const std::string longest(259, 'x');
  EXPECT_TRUE(listed(longest, longest.c_str()));
  EXPECT_TRUE(listed("a " + longest + " b", "b"));
}

TEST_F(app_list_test, a_longer_word_matches_nothing_and_its_neighbours_still_do) {
  const std::string longer(260, 'x');
  EXPECT_FALSE(listed(longer, longer.c_str()));
  EXPECT_FALSE(listed(longer, longer.substr(0, 259).c_str()));
  EXPECT_FALSE(listed(longer, ""));
  EXPECT_TRUE(listed("a " + std::string(5000, 'y') + " b", "b"));
  EXPECT_TRUE(listed("a " + std::string(5000, 'y') + " b", "a"));
}

TEST_F(app_list_test, nothing_is_left_allocated) {
  std::ofstream(path) << "a b c";
  allocation::watch();
  EXPECT_TRUE(__osw_app_in_list(path.c_str(), "b"));
  EXPECT_FALSE(__osw_app_in_list(path.c_str(), "x"));
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
}

TEST_F(app_list_test, every_allocation_can_fail) {
  std::ofstream(path) << "a b c";
  for (int n = 1; n <= 4; ++n) {
    allocation::watch();
    allocation::fail_call(n);
    // The words read before the failure count.
    const bool found = __osw_app_in_list(path.c_str(), "b");
    allocation::stop_failing();
    allocation::stop_watching();
    EXPECT_EQ(found, n > 3) << n;
    EXPECT_EQ(allocation::live_blocks(), 0) << n;
  }
  EXPECT_EQ(open_files(), 0);
}

}  // namespace

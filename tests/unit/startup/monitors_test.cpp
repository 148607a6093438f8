// The monitor table and the split of one monitor.
#include "startup/config/monitors.h"

#include <cstring>

#include "startup/config/options.h"
#include "support/library.h"

bool operator==(const RECT& first, const RECT& second) {
  return std::memcmp(&first, &second, sizeof first) == 0;
}

void PrintTo(const RECT& rect, std::ostream* out) {
  *out << '(' << rect.left << ',' << rect.top << ',' << rect.right << ',' << rect.bottom << ')';
}

namespace {

struct monitors_test : testing::Test {
  void SetUp() override {
    platform::reset();
    __osw_read_options();
  }
  void TearDown() override { platform::reset(); }
};

std::vector<RECT> parts() {
  std::vector<RECT> rects;
  for (int i = 0; i < __osw_part_count; ++i) rects.push_back(__osw_monitor_table[i].rect);
  return rects;
}

constexpr RECT left_monitor = {0, 0, 1920, 1080};
constexpr RECT right_monitor = {1920, 0, 3840, 1080};
constexpr RECT both_monitors = {0, 0, 3840, 1080};

bool all_zero(const __osw_monitor& entry) {
  const __osw_monitor zero = {};
  return std::memcmp(&entry, &zero, sizeof zero) == 0;
}

TEST_F(monitors_test, each_monitor_is_a_part) {
  platform::set_monitors({{left_monitor}, {right_monitor, true}});
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{left_monitor, right_monitor}));
  EXPECT_EQ(__osw_virtual_screen, both_monitors);
  for (u32 i = 0; i < 2; ++i) {
    EXPECT_EQ(__osw_monitor_table[i].index, i);
    EXPECT_EQ(__osw_monitor_table[i].info.cbSize, 72u);
    EXPECT_EQ(__osw_monitor_table[i].info.rcMonitor, __osw_monitor_table[i].rect);
  }
  EXPECT_STREQ(__osw_monitor_table[1].info.szDevice, "\\\\.\\DISPLAY2");
  EXPECT_TRUE(all_zero(__osw_monitor_table[2]));
}

TEST_F(monitors_test, parts_stand_in_the_order_of_enumeration) {
  platform::set_monitors({{right_monitor}, {left_monitor, true}});
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{right_monitor, left_monitor}));
}

TEST_F(monitors_test, several_monitors_can_be_taken_as_one) {
  platform::set_monitors({{left_monitor}, {right_monitor}});
  OSW_DW_FakeAsOneMonitor = 1;
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), std::vector<RECT>{both_monitors});
  EXPECT_TRUE(all_zero(__osw_monitor_table[1]));
  EXPECT_EQ(__osw_virtual_screen, both_monitors);
  EXPECT_EQ(__osw_monitor_table[0].info.rcMonitor, left_monitor);
}

TEST_F(monitors_test, several_monitors_can_be_taken_as_one_and_split) {
  platform::set_monitors({{left_monitor}, {right_monitor}});
  OSW_DW_FakeAsOneMonitor = 1;
  OSW_DW_SplitOneMonitor = 1;
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{
                         {0, 0, 1920, 540}, {1920, 0, 3840, 540}, {0, 540, 1920, 1080}, {1920, 540, 3840, 1080}}));
  EXPECT_EQ(__osw_virtual_screen, both_monitors);
  for (int i = 1; i < 4; ++i) {
    EXPECT_EQ(__osw_monitor_table[i].index, 0u);
    EXPECT_EQ(__osw_monitor_table[i].info.cbSize, 0u);
  }
}

TEST_F(monitors_test, two_monitors_are_not_split) {
  platform::set_monitors({{left_monitor}, {right_monitor}});
  OSW_DW_SplitOneMonitor = 1;
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{left_monitor, right_monitor}));
}

void split(const RECT& monitor, u32 count, u32 horizontal) {
  platform::set_monitors({{monitor}});
  OSW_DW_SplitOneMonitor = 1;
  OSW_DW_SplitParts = count;
  OSW_DW_SplitTwoPartsHorizontal = horizontal;
  __osw_enumerate_monitors();
}

TEST_F(monitors_test, an_odd_width_leaves_the_left_half_smaller) {
  split({0, 0, 1281, 1001}, 2, 1);
  EXPECT_EQ(parts(), (std::vector<RECT>{{0, 0, 640, 1001}, {640, 0, 1281, 1001}}));
}

TEST_F(monitors_test, an_odd_height_leaves_the_upper_half_smaller) {
  split({0, 0, 1281, 1001}, 2, 0);
  EXPECT_EQ(parts(), (std::vector<RECT>{{0, 0, 1281, 500}, {0, 500, 1281, 1001}}));
}

TEST_F(monitors_test, the_width_is_halved_and_not_the_coordinate) {
  split({-1281, -1081, 0, 0}, 4, 0);
  EXPECT_EQ(parts(),
            (std::vector<RECT>{
                {-1281, -1081, -641, -541}, {-641, -1081, 0, -541}, {-1281, -541, -641, 0}, {-641, -541, 0, 0}}));
}

TEST_F(monitors_test, one_part_is_no_split) {
  split(left_monitor, 1, 1);
  EXPECT_EQ(parts(), std::vector<RECT>{left_monitor});
}

TEST_F(monitors_test, three_parts_change_no_rectangle) {
  split(left_monitor, 3, 1);
  EXPECT_EQ(parts(), (std::vector<RECT>{left_monitor, {}, {}}));
}

TEST_F(monitors_test, no_parts_and_fewer_stay_as_told) {
  split(left_monitor, 0, 1);
  EXPECT_EQ(__osw_part_count, 0);
  EXPECT_EQ(__osw_monitor_table[0].rect, left_monitor);
}

TEST_F(monitors_test, a_count_below_zero_stays) {
  split(left_monitor, 0xFFFFFFFE, 1);
  EXPECT_EQ(__osw_part_count, -2);
}

TEST_F(monitors_test, a_split_count_above_the_table_is_cut_with_a_report) {
  split(left_monitor, 17, 1);
  EXPECT_EQ(__osw_part_count, 16);
  ASSERT_EQ(library::reports().size(), 1u);
  EXPECT_TRUE(library::reports()[0].starts_with("OGLSPANWrapper Warning: ")) << library::reports()[0];
}

TEST_F(monitors_test, sixteen_parts_need_no_report) {
  split(left_monitor, 16, 1);
  EXPECT_EQ(__osw_part_count, 16);
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(monitors_test, monitors_above_the_table_are_left_out) {
  std::vector<platform::monitor> row;
  for (int i = 0; i < 20; ++i) row.push_back({{i * 10, 0, i * 10 + 10, 10}});
  platform::set_monitors(row);
  __osw_enumerate_monitors();
  EXPECT_EQ(__osw_part_count, 16);
  EXPECT_EQ(__osw_monitor_table[15].rect, (RECT{150, 0, 160, 10}));
  EXPECT_EQ(__osw_virtual_screen, (RECT{0, 0, 160, 10}));
  EXPECT_EQ(library::reports().size(), 1u);
}

TEST_F(monitors_test, the_count_is_the_systems_and_not_that_of_the_entries) {
  platform::set_monitors({{left_monitor}});
  platform::set_monitor_metric(2);
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{left_monitor, {}}));
  EXPECT_EQ(__osw_virtual_screen, left_monitor);
}

TEST_F(monitors_test, a_monitor_without_information_has_an_empty_part) {
  platform::set_monitors({{left_monitor}, {right_monitor, false, true}});
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), (std::vector<RECT>{left_monitor, {}}));
  EXPECT_EQ(__osw_virtual_screen, left_monitor);
}

TEST_F(monitors_test, a_fake_monitor_is_the_virtual_screen_only) {
  platform::set_monitors({{{-500, 0, 0, 400}}, {{0, 0, 1000, 800}}, {{1000, 100, 1200, 300}}});
  OSW_DW_FakeAsOneMonitor = 1;
  __osw_enumerate_monitors();
  EXPECT_EQ(parts(), std::vector<RECT>({{-500, 0, 1200, 800}}));
  EXPECT_TRUE(all_zero(__osw_monitor_table[2]));
}

}  // namespace

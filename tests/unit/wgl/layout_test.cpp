// Where each part's child stands over the application's window, by both methods, and what each part is told of it.
#include <gtest/gtest.h>

#include "startup/config/monitors.h"
#include "support/wgl_scene.h"

namespace {

using scene::edges;
using scene::edges_of;

struct share {
  edges rect;  // in client coordinates
  u32 visible;
  i32 x, y;  // the offset
};

struct wgl_layout_test : library::process_test {};

void expect_share(const __osw_child_part& part, const share& wanted, int number) {
  SCOPED_TRACE(number);
  EXPECT_EQ(edges_of(part.part_rect), wanted.rect);
  EXPECT_EQ(part.visible, wanted.visible);
  EXPECT_EQ(part.viewport_offset_x, wanted.x);
  EXPECT_EQ(part.viewport_offset_y, wanted.y);
}

// Checks the record, the child windows themselves, and what each part has last been told.
void expect_shares(const library::rendering& rendered, const std::vector<share>& wanted) {
  const platform::window_facts window = platform::window(rendered.window.hwnd);
  const std::vector<platform::window_facts> children = scene::child_windows(rendered.window.hwnd);
  ASSERT_EQ(children.size(), wanted.size());
  for (std::size_t part = 0; part < wanted.size(); ++part) {
    const __osw_child_part& record = scene::mapping_of(rendered.window.hwnd).parts[part];
    expect_share(record, wanted[part], static_cast<int>(part));
    const edges on_screen = {wanted[part].rect[0] + window.client.left, wanted[part].rect[1] + window.client.top,
                             wanted[part].rect[2] + window.client.left, wanted[part].rect[3] + window.client.top};
    EXPECT_EQ(edges_of(children[part].rect), on_screen);
    const std::vector<driver::call> told = library::part_calls(rendered, static_cast<int>(part));
    ASSERT_GE(told.size(), 2u);
    EXPECT_EQ(told[told.size() - 2], driver::expect<glViewportOffsetZ4_op>(wanted[part].x, wanted[part].y));
    EXPECT_EQ(told.back(), driver::expect<glDrawableSizeZ4_op>(window.client.right - window.client.left,
                                                               window.client.bottom - window.client.top));
  }
}

struct layout_case {
  const char* about;
  std::vector<RECT> monitors;
  RECT window;
  std::vector<share> shares;
};

void PrintTo(const layout_case& shown, std::ostream* out) {
  *out << shown.about;
}

struct intersect_test : wgl_layout_test, testing::WithParamInterface<layout_case> {};

// Both from the start, and moved there from elsewhere.
TEST_P(intersect_test, at_the_binding) {
  scene::start_over(GetParam().monitors);
  expect_shares(library::start_rendering(GetParam().window), GetParam().shares);
}

TEST_P(intersect_test, after_a_move) {
  scene::start_over(GetParam().monitors);
  const library::rendering rendered = library::start_rendering({-7, -9, 30, 44});
  driver::clear_calls();
  scene::place(rendered.window.hwnd, GetParam().window);
  expect_shares(rendered, GetParam().shares);
}

const std::vector<RECT> one = {{0, 0, 1920, 1080}};
const std::vector<RECT> row = {{0, 0, 1000, 800}, {1000, 0, 2000, 800}};
const std::vector<RECT> uneven = {{-1280, -200, 0, 824}, {0, 0, 1920, 1080}, {0, 1080, 1920, 1680}};
const std::vector<RECT> square = {{-500, -400, 1, 1}, {1, -400, 501, 1}, {-500, 1, 1, 401}, {1, 1, 501, 401}};

INSTANTIATE_TEST_SUITE_P(
    , intersect_test,
    testing::Values(
        layout_case{"one part, inside", one, {10, 20, 330, 260}, {{{0, 0, 320, 240}, 1, 0, 0}}},
        layout_case{"one part, over all four edges", one, {-5, -6, 1930, 1091}, {{{0, 0, 1935, 1097}, 1, 0, 0}}},
        layout_case{"inside the first of two",
                    row,
                    {100, 50, 700, 450},
                    {{{0, 0, 600, 400}, 1, 0, 0}, {{900, -50, 900, -50}, 0, 0, 0}}},
        layout_case{"inside the second of two",
                    row,
                    {1100, 50, 1700, 450},
                    {{{-1100, -50, -1100, -50}, 0, 0, 0}, {{0, 0, 600, 400}, 1, 0, 0}}},
        layout_case{
            "over both", row, {700, 50, 1500, 450}, {{{0, 0, 300, 400}, 1, 0, 0}, {{300, 0, 800, 400}, 1, -300, 0}}},
        layout_case{"touching the seam from the left alone",
                    row,
                    {700, 50, 1000, 450},
                    {{{0, 0, 300, 400}, 1, 0, 0}, {{300, -50, 300, -50}, 0, 0, 0}}},
        layout_case{"one column beyond the seam",
                    row,
                    {700, 50, 1001, 451},
                    {{{0, 0, 300, 401}, 1, 0, 0}, {{300, 0, 301, 401}, 1, -300, 0}}},
        layout_case{"hanging off the left",
                    row,
                    {-100, 50, 300, 450},
                    {{{0, 0, 400, 400}, 1, 0, 0}, {{1100, -50, 1100, -50}, 0, 0, 0}}},
        layout_case{"hanging off the right",
                    row,
                    {1900, 50, 2300, 450},
                    {{{-1900, -50, -1900, -50}, 0, 0, 0}, {{0, 0, 400, 400}, 1, 0, 0}}},
        layout_case{"hanging off the top, over both",
                    row,
                    {800, -90, 1300, 210},
                    {{{0, 0, 200, 300}, 1, 0, 0}, {{200, 0, 500, 300}, 1, -200, 0}}},
        layout_case{"hanging off the bottom, over both",
                    row,
                    {800, 700, 1300, 1000},
                    {{{0, 0, 200, 300}, 1, 0, 0}, {{200, 0, 500, 300}, 1, -200, 0}}},
        layout_case{"wholly outside the desktop",
                    row,
                    {3000, 50, 3400, 450},
                    {{{-3000, -50, -3000, -50}, 0, 0, 0}, {{-2000, -50, -2000, -50}, 0, 0, 0}}},
        layout_case{"an empty window",
                    row,
                    {300, 200, 300, 200},
                    {{{-300, -200, -300, -200}, 0, 0, 0}, {{700, -200, 700, -200}, 0, 0, 0}}},
        // An edge inside the desktop cuts; one that is the desktop's keeps what hangs over.
        layout_case{"monitors of different heights, negative corner",
                    uneven,
                    {-1300, -250, 101, 951},
                    {{{0, 0, 1300, 1074}, 1, 0, -127},
                     {{1300, 250, 1401, 1201}, 1, -1300, 0},
                     {{1300, 1330, 1300, 1330}, 0, 0, 0}}},
        layout_case{
            "over an upper and a lower monitor",
            uneven,
            {100, 1000, 401, 1301},
            {{{-1380, -1200, -1380, -1200}, 0, 0, 0}, {{0, 0, 301, 80}, 1, 0, -221}, {{0, 80, 301, 301}, 1, 0, 0}}},
        layout_case{"four parts around an odd point",
                    square,
                    {-100, -30, 151, 71},
                    {{{0, 0, 101, 31}, 1, 0, -70},
                     {{101, 0, 251, 31}, 1, -101, -70},
                     {{0, 31, 101, 101}, 1, 0, 0},
                     {{101, 31, 251, 101}, 1, -101, 0}}},
        layout_case{"four parts, over every edge of the desktop",
                    square,
                    {-510, -420, 531, 441},
                    {{{0, 0, 511, 421}, 1, 0, -440},
                     {{511, 0, 1041, 421}, 1, -511, -440},
                     {{0, 421, 511, 861}, 1, 0, 0},
                     {{511, 421, 1041, 861}, 1, -511, 0}}}));

TEST_F(wgl_layout_test, the_frame_of_the_window_belongs_to_no_part) {
  scene::start_over(row);
  library::app_window window;
  window.hwnd = platform::create_window({.rect = {690, 20, 1510, 460}, .frame = {10, 30, 10, 10}});
  window.hdc = GetDC(window.hwnd);
  PIXELFORMATDESCRIPTOR descriptor;
  platform::describe_pixel_format(1, &descriptor);
  ASSERT_TRUE(SetPixelFormat(window.hdc, 1, &descriptor));
  const library::rendering rendered = library::start_rendering_in(window);
  expect_shares(rendered, {{{0, 0, 300, 400}, 1, 0, 0}, {{300, 0, 800, 400}, 1, -300, 0}});
  const __osw_window_mapping& mapping = scene::mapping_of(window.hwnd);
  EXPECT_EQ(edges_of(mapping.client_rect), (edges{0, 0, 800, 400}));
  EXPECT_EQ(edges_of(mapping.window_rect), (edges{690, 20, 1510, 460}));
}

TEST_F(wgl_layout_test, an_unused_part_has_one_pixel_by_option) {
  scene::start_over(row, {.options = {{"OSW_DW_ForceUnusedChildWindowSize1X1", 1}}});
  const library::rendering rendered = library::start_rendering({100, 50, 700, 450});
  expect_shares(rendered, {{{0, 0, 600, 400}, 1, 0, 0}, {{900, -50, 901, -49}, 0, 0, 0}});
  scene::place(rendered.window.hwnd, {3000, 50, 3400, 450});
  expect_shares(rendered, {{{-3000, -50, -2999, -49}, 0, 0, 0}, {{-2000, -50, -1999, -49}, 0, 0, 0}});
}

// A part that is left comes back when the window does.
TEST_F(wgl_layout_test, a_part_is_left_and_taken_again) {
  scene::start_over(row);
  const library::rendering rendered = library::start_rendering({700, 50, 1500, 450});
  const std::vector<share> over_both = {{{0, 0, 300, 400}, 1, 0, 0}, {{300, 0, 800, 400}, 1, -300, 0}};
  for (int round = 0; round < 2; ++round) {
    scene::place(rendered.window.hwnd, {0, 0, 800, 400});
    expect_shares(rendered, {{{0, 0, 800, 400}, 1, 0, 0}, {{1000, 0, 1000, 0}, 0, 0, 0}});
    scene::place(rendered.window.hwnd, {700, 50, 1500, 450});
    expect_shares(rendered, over_both);
  }
}

TEST_F(wgl_layout_test, sixteen_parts_in_a_row) {
  library::start({.parts = 16});
  const library::rendering rendered = library::start_rendering({-50, 10, 6501, 311});
  std::vector<share> wanted;
  for (LONG part = 0; part < 16; ++part) {
    const LONG left = part == 0 ? 0 : 400 * part + 50;
    const LONG right = part == 15 ? 6551 : 400 * part + 450;
    wanted.push_back({{left, 0, right, 301}, 1, static_cast<i32>(-left), 0});
  }
  expect_shares(rendered, wanted);
}

LONG area(const RECT& rect) {
  return (rect.right - rect.left) * (rect.bottom - rect.top);
}

// Wherever a window stands on a desktop without holes, the parts' shares make up the window, with no pixel twice.
TEST_F(wgl_layout_test, the_shares_make_up_the_window) {
  scene::start_over(square);
  const library::rendering rendered = library::start_rendering({0, 0, 10, 10});
  const RECT desktop = __osw_virtual_screen;
  for (LONG left = -640; left < 560; left += 149) {
    for (LONG top = -530; top < 450; top += 97) {
      for (LONG size = 1; size < 1300; size = size * 3 + 2) {
        const RECT window = {left, top, left + size, top + size / 2 + 1};
        scene::place(rendered.window.hwnd, window);
        const __osw_window_mapping& mapping = scene::mapping_of(rendered.window.hwnd);
        LONG covered = 0;
        for (int part = 0; part < 4; ++part) {
          const RECT& mine = mapping.parts[part].part_rect;
          covered += area(mine);
          for (int other = part + 1; other < 4; ++other) {
            RECT both;
            EXPECT_FALSE(IntersectRect(&both, &mine, &mapping.parts[other].part_rect));
          }
        }
        RECT seen;
        ASSERT_EQ(covered, IntersectRect(&seen, &window, &desktop) ? area(window) : 0)
            << left << ' ' << top << ' ' << size;
      }
    }
  }
}

// ---- the split method ----

struct split_case {
  int parts;
  std::vector<edges> rects;  // of a client area of 301 by 201
};

struct split_test : wgl_layout_test, testing::WithParamInterface<split_case> {};

TEST_P(split_test, the_parts_divide_the_window_wherever_it_stands) {
  library::start({.parts = GetParam().parts,
                  .options = {{"OSW_DW_UseSplitParentMethod", 1}, {"OSW_DW_SplitTwoPartsHorizontal", 0}}});
  const library::rendering rendered = library::start_rendering({20, 30, 321, 231});
  std::vector<share> wanted;
  for (const edges& rect : GetParam().rects) {
    wanted.push_back({rect, 1, static_cast<i32>(-rect[0]), static_cast<i32>(rect[3] - 201)});
  }
  expect_shares(rendered, wanted);
  for (const LONG x : {-5000, -100, 1800}) {
    scene::place(rendered.window.hwnd, {x, -17, x + 301, 184});
    expect_shares(rendered, wanted);
    for (std::size_t part = 0; part < wanted.size(); ++part) {
      const __osw_child_part& child = scene::mapping_of(rendered.window.hwnd).parts[part];
      EXPECT_EQ(edges_of(child.screen_rect), edges_of(platform::window(child.child_hwnd).rect));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    , split_test,
    testing::Values(split_case{1, {{0, 0, 301, 201}}},
                    // Left and right whatever the option on halves says.
                    split_case{2, {{0, 0, 150, 201}, {150, 0, 301, 201}}},
                    split_case{4, {{0, 0, 150, 100}, {150, 0, 301, 100}, {0, 100, 150, 201}, {150, 100, 301, 201}}},
                    split_case{3, std::vector<edges>(3)}, split_case{16, std::vector<edges>(16)}));

// ---- the parts of one monitor ----

TEST_F(wgl_layout_test, the_halves_of_a_monitor) {
  library::start({.parts = 2, .options = {{"OSW_DW_SplitTwoPartsHorizontal", 0}}});
  const library::rendering rendered = library::start_rendering({100, 500, 300, 601});
  // The upper half's share ends above the window's bottom.
  expect_shares(rendered, {{{0, 0, 200, 40}, 1, 0, -61}, {{0, 40, 200, 101}, 1, 0, 0}});
}

}  // namespace

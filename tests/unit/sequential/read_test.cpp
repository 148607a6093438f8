// A part's share of a framebuffer read, on both paths.
#include <map>

#include "dispatch/thread_state.h"
#include "support/received.h"
#include "support/sequential_steps.h"
#include "wgl/records/window_mapping.h"

namespace {

struct sequential_read_test : library::process_test {};

bool same_rect(const RECT& first, const RECT& second) {
  return first.left == second.left && first.top == second.top && first.right == second.right &&
         first.bottom == second.bottom;
}

void expect_part_rect(int part, const RECT& expected) {
  EXPECT_TRUE(same_rect(__osw_fetch_thread_state()->window_mapping->parts[part].part_rect, expected)) << part;
}

// A window of 600 by 400 over the middle of four parts: 260 of its columns and 140 of its rows lie left and above.
constexpr RECT over_the_middle = {700, 400, 1300, 800};

library::rendering start_over_the_middle(library::path way) {
  library::start({.parts = 4, .way = way});
  const library::rendering rendered = library::start_rendering(over_the_middle);
  expect_part_rect(0, {0, 0, 260, 140});
  expect_part_rect(1, {260, 0, 600, 140});
  expect_part_rect(2, {0, 140, 260, 400});
  expect_part_rect(3, {260, 140, 600, 400});
  driver::clear_calls();
  return rendered;
}

// What a part's own drawable says of the pack state.
struct pack_state {
  GLint row_length = 0;
  GLint image_height = 0;
  GLint skip_rows = 0;
  GLint skip_pixels = 0;
};

void set_pack_state(const pack_state& pack) {
  driver::on_call<glGetIntegerv_op>([pack](driver::live_call& live) {
    auto* value = reinterpret_cast<GLint*>(live.what.arguments[1]);
    switch (live.what.arguments[0]) {
      case GL_PACK_ROW_LENGTH:
        *value = pack.row_length;
        return;
      case GL_PACK_IMAGE_HEIGHT:
        *value = pack.image_height;
        return;
      case GL_PACK_SKIP_ROWS:
        *value = pack.skip_rows;
        return;
      case GL_PACK_SKIP_PIXELS:
        *value = pack.skip_pixels;
        return;
      default:
        ADD_FAILURE() << live.what;
    }
  });
}

struct share {
  GLint x, y, width, height;
};

void append_store(std::vector<driver::call>* calls, const pack_state& pack) {
  calls->push_back(driver::expect<glPixelStorei_op>(GL_PACK_ROW_LENGTH, pack.row_length));
  calls->push_back(driver::expect<glPixelStorei_op>(GL_PACK_IMAGE_HEIGHT, pack.image_height));
  calls->push_back(driver::expect<glPixelStorei_op>(GL_PACK_SKIP_ROWS, pack.skip_rows));
  calls->push_back(driver::expect<glPixelStorei_op>(GL_PACK_SKIP_PIXELS, pack.skip_pixels));
}

// The calls of one part, the addresses of the queries' results left out.
std::vector<driver::call> expected_read(const pack_state& before, const pack_state& during, const share& read,
                                        const void* pixels) {
  std::vector<driver::call> calls;
  for (GLenum name : {GL_PACK_ROW_LENGTH, GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS}) {
    calls.push_back(driver::expect<glGetIntegerv_op>(name, nullptr));
  }
  append_store(&calls, during);
  calls.push_back(driver::expect<glReadPixels_op>(read.x, read.y, read.width, read.height, GL_RGBA, GL_UNSIGNED_BYTE,
                                                  const_cast<void*>(pixels)));
  append_store(&calls, before);
  return calls;
}

std::vector<driver::call> without_addresses(std::vector<driver::call> calls) {
  for (driver::call& one : calls) {
    if (one.op == glGetIntegerv_op::op) one.arguments[1] = 0;
  }
  return calls;
}

void expect_read(const library::rendering& rendered, std::size_t part, const std::vector<driver::call>& expected) {
  EXPECT_EQ(without_addresses(driver::gl_calls_in(rendered.children[part])), expected) << "part " << part;
}

TEST_F(sequential_read_test, each_part_reads_its_share_into_its_place) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  std::vector<GLubyte> pixels(100 * 100 * 4);
  const pack_state none;
  osw_glReadPixels(200, 200, 100, 100, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  expect_read(rendered, 0, expected_read(none, {100, 100, 60, 0}, {200, 0, 60, 40}, pixels.data()));
  expect_read(rendered, 1, expected_read(none, {100, 100, 60, 60}, {0, 0, 40, 40}, pixels.data()));
  expect_read(rendered, 2, expected_read(none, {100, 100, 0, 0}, {200, 200, 60, 60}, pixels.data()));
  expect_read(rendered, 3, expected_read(none, {100, 100, 0, 60}, {0, 200, 40, 60}, pixels.data()));
}

// What is bound for reading is not asked for: the shares are those of the window.
TEST_F(sequential_read_test, a_bound_framebuffer_is_read_by_the_shares_of_the_window) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  std::vector<GLubyte> pixels(100 * 100 * 4);
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 5);
  driver::clear_calls();
  set_pack_state({});  // fails the test when anything else is asked
  osw_glReadPixels(200, 200, 100, 100, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  expect_read(rendered, 0, expected_read({}, {100, 100, 60, 0}, {200, 0, 60, 40}, pixels.data()));
  expect_read(rendered, 3, expected_read({}, {100, 100, 0, 60}, {0, 200, 40, 60}, pixels.data()));
}

TEST_F(sequential_read_test, the_applications_pack_state_is_added_to_and_put_back) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  std::vector<GLubyte> pixels(200 * 200 * 4);
  const pack_state own = {120, 130, 3, 4};
  set_pack_state(own);
  osw_glReadPixels(200, 200, 100, 100, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  expect_read(rendered, 0, expected_read(own, {120, 130, 63, 4}, {200, 0, 60, 40}, pixels.data()));
  expect_read(rendered, 3, expected_read(own, {120, 130, 3, 64}, {0, 200, 40, 60}, pixels.data()));
}

TEST_F(sequential_read_test, each_part_is_switched_to_in_turn) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  GLubyte pixel[4];
  osw_glReadPixels(590, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  std::vector<driver::call> switches;
  for (const driver::call& call : driver::calls()) {
    if (call.space == driver::op_space::wgl) switches.push_back(call);
  }
  std::vector<driver::call> expected;
  for (HGLRC child : rendered.children) expected.push_back(sequential::switch_to(child).what);
  expected.push_back(sequential::switch_to(rendered.context).what);
  EXPECT_EQ(switches, expected);
}

TEST_F(sequential_read_test, a_part_that_the_rectangle_misses_gets_no_call) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  std::vector<GLubyte> pixels(10 * 10 * 4);
  osw_glReadPixels(260, 0, 10, 10, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  for (std::size_t part : {0, 1, 2}) expect_read(rendered, part, {});
  expect_read(rendered, 3, expected_read({}, {10, 10, 0, 0}, {0, 0, 10, 10}, pixels.data()));
}

TEST_F(sequential_read_test, a_part_that_is_not_visible_gets_no_call) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  __osw_fetch_thread_state()->window_mapping->parts[3].visible = 0;
  std::vector<GLubyte> pixels(600 * 400 * 4);
  osw_glReadPixels(0, 0, 600, 400, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  expect_read(rendered, 3, {});
  expect_read(rendered, 2, expected_read({}, {600, 400, 0, 0}, {0, 0, 260, 260}, pixels.data()));
}

TEST_F(sequential_read_test, a_rectangle_without_pixels_makes_no_call) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  for (const auto& [width, height] : {std::pair{0, 5}, std::pair{5, 0}, std::pair{-1, 5}, std::pair{5, -1}}) {
    osw_glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  }
  for (HGLRC child : rendered.children) EXPECT_TRUE(driver::gl_calls_in(child).empty());
}

TEST_F(sequential_read_test, a_rectangle_beyond_the_window_is_cut_where_the_parts_end) {
  const library::rendering rendered = start_over_the_middle(library::path::sequential);
  std::vector<GLubyte> pixels(50 * 50 * 4);
  osw_glReadPixels(-20, -30, 50, 50, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  expect_read(rendered, 2, expected_read({}, {50, 50, 30, 20}, {0, 0, 30, 20}, pixels.data()));
}

void expect_shares_on_workers() {
  std::vector<GLubyte> pixels(100 * 100 * 4);
  received::clear();
  osw_glReadPixels(200, 200, 100, 100, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  const std::map<int, std::vector<driver::call>> expected = {
      {0, expected_read({}, {100, 100, 60, 0}, {200, 0, 60, 40}, pixels.data())},
      {1, expected_read({}, {100, 100, 60, 60}, {0, 0, 40, 40}, pixels.data())},
      {2, expected_read({}, {100, 100, 0, 0}, {200, 200, 60, 60}, pixels.data())},
      {3, expected_read({}, {100, 100, 0, 60}, {0, 200, 40, 60}, pixels.data())}};
  for (const auto& [part, calls] : expected) {
    EXPECT_EQ(without_addresses(received::without_memory(received::of_part(part))), calls) << "part " << part;
  }
}

TEST_F(sequential_read_test, workers_read_the_same_shares) {
  received::watch(start_over_the_middle(library::path::threaded));
  expect_shares_on_workers();
}

TEST_F(sequential_read_test, workers_read_a_bound_framebuffer_by_the_shares_of_the_window) {
  received::watch(start_over_the_middle(library::path::threaded));
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 5);
  received::wait_for_parts();
  expect_shares_on_workers();
}

}  // namespace

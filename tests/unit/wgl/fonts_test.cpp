// Glyphs as display lists: in the extended mode each part makes them too, when its turn has come.
#include "support/issuing.h"

namespace {

struct fonts_test : library::process_test, testing::WithParamInterface<library::path> {
  void start() {
    library::start({.parts = 3, .way = GetParam(), .extended = true});
    rendered = library::start_rendering();
    library::finish();
    driver::clear_calls();
  }
  // The contexts in which an op was called, in the order of the calls, which all had these arguments.
  template <class Op, class... Arguments>
  std::vector<HGLRC> contexts_of(Arguments... arguments) {
    std::vector<HGLRC> found;
    for (const driver::call& call : driver::calls_of<Op>()) {
      EXPECT_EQ(call, driver::expect<Op>(arguments...));
      found.push_back(call.context);
    }
    return found;
  }
  std::vector<HGLRC> all_in_turn() const {
    std::vector<HGLRC> all = rendered.children;
    all.insert(all.begin(), rendered.context);
    return all;
  }
  library::rendering rendered;
};

TEST_P(fonts_test, each_part_makes_them_in_its_turn) {
  start();
  const HDC hdc = rendered.window.hdc;
  GLYPHMETRICSFLOAT metrics[2];
  EXPECT_TRUE(osw_wglUseFontBitmapsA(hdc, 1, 2, 3));
  EXPECT_TRUE(osw_wglUseFontBitmapsW(hdc, 4, 5, 6));
  EXPECT_TRUE(osw_wglUseFontOutlinesA(hdc, 7, 2, 9, 0.5f, 1.5f, 4, metrics));
  EXPECT_TRUE(osw_wglUseFontOutlinesW(hdc, 8, 2, 10, 2.5f, 3.5f, 5, nullptr));
  EXPECT_EQ(contexts_of<wglUseFontBitmapsA_op>(hdc, 1u, 2u, 3u), all_in_turn());
  EXPECT_EQ(contexts_of<wglUseFontBitmapsW_op>(hdc, 4u, 5u, 6u), all_in_turn());
  EXPECT_EQ(contexts_of<wglUseFontOutlinesA_op>(hdc, 7u, 2u, 9u, 0.5f, 1.5f, 4, metrics), all_in_turn());
  EXPECT_EQ(contexts_of<wglUseFontOutlinesW_op>(hdc, 8u, 2u, 10u, 2.5f, 3.5f, 5, nullptr), all_in_turn());
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_P(fonts_test, what_the_system_refuses_reaches_no_part) {
  start();
  driver::set_result<wglUseFontBitmapsA_op>(0);
  EXPECT_FALSE(osw_wglUseFontBitmapsA(rendered.window.hdc, 1, 2, 3));
  library::finish();
  EXPECT_EQ(driver::calls_of<wglUseFontBitmapsA_op>().size(), 1u);
}

TEST_P(fonts_test, without_a_context_it_is_the_system_s) {
  start();
  ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  osw_wglUseFontBitmapsA(rendered.window.hdc, 1, 2, 3);
  EXPECT_EQ(driver::calls_of<wglUseFontBitmapsA_op>().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(paths, fonts_test, testing::Values(library::path::threaded, library::path::sequential),
                         [](const auto& way) {
                           return way.param == library::path::threaded ? "threaded" : "sequential";
                         });

}  // namespace

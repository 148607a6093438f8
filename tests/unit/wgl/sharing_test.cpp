// Contexts that share lists at different times of their lives, contexts that are deleted under those who use them, and
// more contexts and pbuffers than the registries have room for.
#include <gtest/gtest.h>

#include "support/wgl_scene.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"

namespace {

using scene::in;
using scene::own_state;
using scene::worker_steps;
using steps = std::vector<scene::step>;

constexpr int parts = 2;

struct context_made {
  HGLRC app = nullptr;
  std::vector<HGLRC> children;
};

context_made make_context(HDC hdc) {
  context_made made;
  made.app = osw_wglCreateContext(hdc);
  EXPECT_NE(made.app, nullptr);
  made.children = driver::contexts_made_after(made.app, parts);
  return made;
}

// What the worker of a part does to share the lists of two contexts, with `current` current on it.
scene::step sharing(const context_made& first, const context_made& second, std::size_t part, HGLRC current = nullptr) {
  return in<wglShareLists_op>(current, first.children[part], second.children[part]);
}

HDC child_hdc(const library::app_window& window, std::size_t part) {
  return scene::mapping_of(window.hwnd).parts[part].child_hdc;
}

struct wgl_sharing_test : library::process_test, testing::WithParamInterface<library::path> {};
INSTANTIATE_TEST_SUITE_P(, wgl_sharing_test, testing::Values(library::path::threaded, library::path::sequential));

// ---- sharing ----

TEST_P(wgl_sharing_test, before_the_first_binding) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  const context_made first = make_context(window.hdc);
  const context_made second = make_context(window.hdc);
  EXPECT_TRUE(osw_wglShareLists(first.app, second.app));
  EXPECT_EQ(driver::calls_of<wglShareLists_op>().size(), 1u);
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, second.app));
  for (std::size_t part = 0; part < parts; ++part) {
    const steps done = worker_steps(static_cast<int>(part));
    ASSERT_GE(done.size(), 2u);
    // Before the child is ever current, when it has no lists of its own yet.
    EXPECT_EQ(done[0], sharing(first, second, part));
    EXPECT_EQ(done[1], in<wglMakeCurrent_op>(nullptr, child_hdc(window, part), second.children[part]));
  }
  // Once is enough.
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, first.app));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, second.app));
  EXPECT_EQ(driver::calls_of<wglShareLists_op>().size(), 1u + parts);
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_P(wgl_sharing_test, several_pairs_before_the_first_binding) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  std::vector<context_made> made;
  for (int i = 0; i < 4; ++i) made.push_back(make_context(window.hdc));
  for (std::size_t i = 1; i < made.size(); ++i) EXPECT_TRUE(osw_wglShareLists(made[0].app, made[i].app));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, made[0].app));
  for (std::size_t part = 0; part < parts; ++part) {
    const steps done = worker_steps(static_cast<int>(part));
    ASSERT_GE(done.size(), 4u);
    EXPECT_EQ(
        steps(done.begin(), done.begin() + 3),
        (steps{sharing(made[0], made[1], part), sharing(made[0], made[2], part), sharing(made[0], made[3], part)}));
    EXPECT_EQ(done[3].call.op, wglMakeCurrent_op::op);
  }
}

// A context that shares already is refused as the second of another pair: what the program did first goes first.
TEST_P(wgl_sharing_test, a_chain_is_shared_in_the_order_of_the_calls) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  std::vector<context_made> made;
  for (int i = 0; i < 3; ++i) made.push_back(make_context(window.hdc));
  EXPECT_TRUE(osw_wglShareLists(made[0].app, made[2].app));
  EXPECT_TRUE(osw_wglShareLists(made[2].app, made[1].app));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, made[0].app));
  for (std::size_t part = 0; part < parts; ++part) {
    const steps done = worker_steps(static_cast<int>(part));
    ASSERT_GE(done.size(), 2u);
    EXPECT_EQ(steps(done.begin(), done.begin() + 2),
              (steps{sharing(made[0], made[2], part), sharing(made[2], made[1], part)}));
  }
}

// The usual case of a loader: shared where nothing is bound yet, first used somewhere else.
TEST_P(wgl_sharing_test, on_one_thread_and_used_on_another) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  const context_made first = make_context(window.hdc);
  const context_made second = make_context(window.hdc);
  EXPECT_TRUE(osw_wglShareLists(first.app, second.app));
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    const library::app_window other = library::open_window({0, 0, 50, 50});
    EXPECT_TRUE(osw_wglMakeCurrent(other.hdc, second.app));
    for (std::size_t part = 0; part < parts; ++part) {
      EXPECT_EQ(worker_steps(static_cast<int>(part)).at(0), sharing(first, second, part));
    }
  });
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, first.app));
  EXPECT_EQ(driver::calls_of<wglShareLists_op>().size(), 1u + parts);
  library::end_thread(thread);
}

TEST_P(wgl_sharing_test, after_the_first_has_been_used) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering();
  const context_made first{rendered.context, rendered.children};
  const context_made second = make_context(rendered.window.hdc);
  driver::clear_calls();
  osw_glNewList(7, GL_COMPILE);
  osw_glEndList();
  EXPECT_TRUE(osw_wglShareLists(first.app, second.app));
  osw_glDeleteLists(7, 1);
  library::finish();
  for (std::size_t part = 0; part < parts; ++part) {
    const HGLRC child = first.children[part];
    EXPECT_EQ(driver::gl_calls_in(child),
              (std::vector{driver::expect<glNewList_op>(7u, unsigned{GL_COMPILE}), driver::expect<glEndList_op>(),
                           driver::expect<glDeleteLists_op>(7u, 1)}));
    // Threaded, the share stands between the calls that were made before and after it.
    const steps done = worker_steps(static_cast<int>(part));
    if (GetParam() == library::path::threaded) {
      ASSERT_EQ(done.size(), 4u);
      EXPECT_EQ(done[2], sharing(first, second, part, child));
    } else {
      EXPECT_EQ(done, (steps{sharing(first, second, part, child)}));
    }
  }
}

TEST_P(wgl_sharing_test, nothing_is_left_to_share_with_a_context_that_is_gone) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  const context_made first = make_context(window.hdc);
  const context_made second = make_context(window.hdc);
  const context_made third = make_context(window.hdc);
  EXPECT_TRUE(osw_wglShareLists(first.app, second.app));
  EXPECT_TRUE(osw_wglShareLists(third.app, first.app));
  EXPECT_TRUE(osw_wglDeleteContext(first.app));
  // The slot goes to another context, which has shared nothing.
  const context_made fourth = make_context(window.hdc);
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, fourth.app));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, second.app));
  EXPECT_EQ(driver::calls_of<wglShareLists_op>().size(), 2u);
  EXPECT_EQ(driver::context(second.children[0]).current_on, own_state()->started.worker_thread_id[0]);
}

// ---- deletion ----

// The calls of a part that nobody had a context for any more, forgotten again: the application's own fault.
void forget_stray_calls() {
  library::finish();
  driver::clear_calls();
}

TEST_P(wgl_sharing_test, drawing_goes_on_after_the_current_context_is_deleted) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
  driver::clear_calls();
  osw_glBegin(GL_POINTS);
  osw_glVertex2f(1, 2);
  osw_glEnd();
  osw_glFinish();
  EXPECT_TRUE(driver::gl_calls_in(rendered.children[0]).empty());
  forget_stray_calls();
  // Another context of the window is as good as ever.
  const library::rendering next = library::start_rendering_in(rendered.window);
  driver::clear_calls();
  osw_glClear(5);
  library::finish();
  for (int part = 0; part < parts; ++part) {
    EXPECT_EQ(library::part_calls(next, part), (std::vector{driver::expect<glClear_op>(5u)}));
  }
}

TEST_P(wgl_sharing_test, a_context_is_deleted_that_is_current_elsewhere) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  const library::app_thread_pointer thread = library::start_thread();
  library::rendering rendered;
  library::run(thread, [&] {
    rendered = library::start_rendering();
    osw_glClear(1);
    library::finish();
  });
  // The system refuses, for the context and for its children; the record is gone all the same.
  driver::clear_calls();
  EXPECT_FALSE(osw_wglDeleteContext(rendered.context));
  EXPECT_EQ(driver::calls_of<wglDeleteContext_op>().size(), 1u + parts);
  EXPECT_TRUE(driver::context(rendered.context).live);
  EXPECT_EQ(__osw_glrc_lookup(rendered.context), nullptr);
  library::run(thread, [&] {
    driver::clear_calls();
    osw_glClear(2);
    library::finish();
    if (GetParam() == library::path::threaded) {
      // The children are still current on their workers.
      for (int part = 0; part < parts; ++part) {
        EXPECT_EQ(library::part_calls(rendered, part), (std::vector{driver::expect<glClear_op>(2u)}));
      }
    }
    forget_stray_calls();
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    for (const HGLRC child : rendered.children) EXPECT_EQ(driver::context(child).current_on, 0u);
    const library::rendering next = library::start_rendering_in(rendered.window);
    driver::clear_calls();
    osw_glClear(3);
    library::finish();
    for (int part = 0; part < parts; ++part) {
      EXPECT_EQ(library::part_calls(next, part), (std::vector{driver::expect<glClear_op>(3u)}));
    }
  });
  library::end_thread(thread);
}

// ---- more than there is room for ----

template <class Record, int count, class Key>
int used(const Record (&records)[count], Key Record::*key) {
  int found = 0;
  for (const Record& record : records) found += record.*key != nullptr;
  return found;
}

TEST_P(wgl_sharing_test, seventy_contexts) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  const library::app_window window = library::open_window();
  std::vector<context_made> all;
  for (int i = 0; i < 70; ++i) all.push_back(make_context(window.hdc));
  EXPECT_EQ(used(__osw_glrc_registry, &__osw_glrc::app_hglrc), 64);
  for (std::size_t i = 0; i < all.size(); ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(osw_wglMakeCurrent(window.hdc, all[i].app));
    driver::clear_calls();
    osw_glClear(5);
    library::finish();
    const std::vector<driver::call> once = {driver::expect<glClear_op>(5u)};
    const bool spread = i < 64;
    EXPECT_EQ(driver::gl_calls_in(all[i].app), spread ? std::vector<driver::call>() : once);
    for (const HGLRC child : all[i].children) {
      EXPECT_EQ(driver::gl_calls_in(child), spread ? once : std::vector<driver::call>());
    }
  }
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  for (const context_made& made : all) EXPECT_TRUE(osw_wglDeleteContext(made.app));
  EXPECT_EQ(used(__osw_glrc_registry, &__osw_glrc::app_hglrc), 0);
  // Of those that found no slot nobody held the children.
  int live = 0;
  for (const driver::context_facts& facts : driver::contexts()) live += facts.live;
  EXPECT_EQ(live, 6 * parts);
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_P(wgl_sharing_test, seventy_pbuffers) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering();
  std::vector<HPBUFFERARB> all;
  for (int i = 0; i < 70; ++i) all.push_back(osw_wglCreatePbufferARB(rendered.window.hdc, 1, 8, 8, nullptr));
  EXPECT_EQ(used(__osw_pbuffer_registry, &__osw_pbuffer::app_hpbuffer), 64);
  for (std::size_t i = 0; i < all.size(); ++i) {
    SCOPED_TRACE(i);
    const bool spread = i < 64;
    driver::clear_calls();
    const HDC hdc = osw_wglGetPbufferDCARB(all[i]);
    EXPECT_EQ(hdc != nullptr, spread);
    EXPECT_EQ(driver::calls_of<wglGetPbufferDCARB_op>().size(), spread ? 1u + parts : 1u);
    osw_wglBindTexImageARB(all[i], 1);
    library::finish();
    EXPECT_EQ(driver::calls_of<wglBindTexImageARB_op>().size(), spread ? std::size_t{parts} : 0u);
    if (!spread) continue;
    ASSERT_TRUE(osw_wglMakeCurrent(hdc, rendered.context));
    EXPECT_EQ(own_state()->pbuffer, &__osw_pbuffer_registry[i]);
  }
  EXPECT_EQ(library::reports().size(), 6u);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  for (const HPBUFFERARB pbuffer : all) EXPECT_TRUE(osw_wglDestroyPbufferARB(pbuffer));
  EXPECT_EQ(used(__osw_pbuffer_registry, &__osw_pbuffer::app_hpbuffer), 0);
  EXPECT_EQ(driver::pbuffers().size(), std::size_t{6 * parts});
}

}  // namespace

// Contexts that are made with attributes, and bindings that name what is drawn to and what is read from.
#include <algorithm>
#include <mutex>

#include "ops/offered_version.h"
#include "support/wgl_scene.h"
#include "wgl/records/glrc.h"

namespace {

using scene::in;
using scene::own_state;
using scene::worker_steps;
using steps = std::vector<scene::step>;
using list = std::vector<int>;

constexpr int major = 0x2091;
constexpr int minor = 0x2092;
constexpr int layer_plane = 0x2093;
constexpr int flags = 0x2094;
constexpr int profile = 0x9126;
constexpr int core_bit = 1;
constexpr int device_bit = 4;
constexpr DWORD invalid_version = 0x2095;

// Where and with what a context was made.
struct creation {
  DWORD thread = 0;
  HDC hdc = nullptr;
  HGLRC share = nullptr;
  list attributes;
};

struct context_attributes_test : library::process_test, testing::WithParamInterface<library::path> {
  void start(int parts = 2) {
    library::start({.parts = parts, .way = GetParam(), .extended = true});
    driver::on_call<wglCreateContextAttribsARB_op>([this](driver::live_call& live) {
      creation one{live.what.thread_id,
                   reinterpret_cast<HDC>(live.what.arguments[0]),
                   reinterpret_cast<HGLRC>(live.what.arguments[1]),
                   {}};
      for (const int* at = reinterpret_cast<const int*>(live.what.arguments[2]); at && *at; at += 2) {
        one.attributes.insert(one.attributes.end(), {at[0], at[1]});
      }
      const std::lock_guard guard(lock);
      made.push_back(one);
    });
  }

  std::mutex lock;
  std::vector<creation> made;
};
INSTANTIATE_TEST_SUITE_P(, context_attributes_test,
                         testing::Values(library::path::threaded, library::path::sequential));

int live_contexts() {
  int live = 0;
  for (const driver::context_facts& facts : driver::contexts()) live += facts.live;
  return live;
}

HGLRC create(HDC hdc, HGLRC share = nullptr, list attributes = {}) {
  attributes.push_back(0);
  return osw_wglCreateContextAttribsARB(hdc, share, attributes.data());
}

// A thread that has called knows the extensions' entries from its first binding on.
library::rendering ready() {
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  return rendered;
}

TEST_P(context_attributes_test, a_context_has_one_child_for_each_part_with_the_same_attributes) {
  start(4);
  const HDC hdc = ready().window.hdc;
  const HGLRC context = create(hdc, nullptr, {major, 3, minor, 1, layer_plane, 0, flags, 2});
  ASSERT_NE(context, nullptr);
  ASSERT_EQ(made.size(), 5u);
  EXPECT_EQ(made[0].hdc, hdc);
  EXPECT_EQ(made[0].attributes, (list{major, 3, minor, 1, layer_plane, 0, flags, 2}));
  const __osw_glrc* record = __osw_glrc_lookup(context);
  ASSERT_NE(record, nullptr);
  const std::vector<HGLRC> children = driver::contexts_made_after(context, 4);
  for (std::size_t part = 0; part < 4; ++part) {
    EXPECT_EQ(record->child_hglrc[part], children[part]);
    EXPECT_NE(made[part + 1].hdc, hdc);
    EXPECT_EQ(made[part + 1].share, nullptr);
    EXPECT_EQ(made[part + 1].attributes, (list{major, 3, minor, 1, flags, 2}));
    EXPECT_EQ(made[part + 1].thread, GetCurrentThreadId());
  }
  EXPECT_EQ(record->pack_store.alignment, 4);
  EXPECT_EQ(record->unpack_store.alignment, 4);
  EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  EXPECT_TRUE(library::reports().empty());
}

TEST_P(context_attributes_test, no_list_is_an_empty_one) {
  start();
  const HGLRC context = osw_wglCreateContextAttribsARB(ready().window.hdc, nullptr, nullptr);
  ASSERT_NE(context, nullptr);
  EXPECT_NE(__osw_glrc_lookup(context), nullptr);
  ASSERT_EQ(made.size(), 3u);
  EXPECT_TRUE(made[1].attributes.empty());
}

TEST_P(context_attributes_test, what_is_drawn_reaches_the_parts) {
  start();
  const library::app_window window = ready().window;
  const HGLRC context = create(window.hdc);
  const std::vector<HGLRC> children = driver::contexts_made_after(context, 2);
  ASSERT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  driver::clear_calls();
  osw_glEnable(GL_BLEND);
  library::finish();
  for (const HGLRC child : children) {
    EXPECT_EQ(driver::gl_calls_in(child), (std::vector{driver::expect<glEnable_op>(GL_BLEND)}));
  }
  EXPECT_TRUE(osw_wglDeleteContext(context));
  EXPECT_EQ(live_contexts(), 3);
}

TEST_P(context_attributes_test, what_the_system_refuses_has_no_children_and_the_system_s_error) {
  start();
  const HDC hdc = ready().window.hdc;
  driver::on_call<wglCreateContextAttribsARB_op>([](driver::live_call& live) {
    SetLastError(0x2096);
    live.answered = true;
  });
  const int before = live_contexts();
  EXPECT_EQ(create(hdc, nullptr, {profile, 8}), nullptr);
  EXPECT_EQ(GetLastError(), 0x2096u);
  EXPECT_EQ(live_contexts(), before);
  EXPECT_TRUE(library::reports().empty());
}

TEST_P(context_attributes_test, a_version_beyond_what_is_offered_is_refused_without_a_call) {
  start();
  const HDC hdc = ready().window.hdc;
  const offered_version& newest = newest_offered_version();
  for (const list& beyond : {list{major, newest.major, minor, newest.minor + 1}, list{major, newest.major + 1},
                             list{minor, 9, major, 9, profile, core_bit}}) {
    SetLastError(0);
    EXPECT_EQ(create(hdc, nullptr, beyond), nullptr);
    EXPECT_EQ(GetLastError(), invalid_version);
  }
  EXPECT_TRUE(made.empty());
  EXPECT_NE(create(hdc, nullptr, {major, newest.major, minor, newest.minor}), nullptr);
}

TEST_P(context_attributes_test, a_context_for_devices_has_no_children) {
  start();
  const HGLRC context = create(ready().window.hdc, nullptr, {major, 9, profile, device_bit});
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(made.size(), 1u);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
}

// The length of a list has a bound; the system may read on.
TEST_P(context_attributes_test, a_list_without_an_end_is_the_system_s_alone) {
  start();
  list endless;
  for (int i = 0; i < 65; ++i) endless.insert(endless.end(), {flags, 0});
  const HGLRC context = create(ready().window.hdc, nullptr, endless);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
  ASSERT_EQ(made.size(), 1u);
  EXPECT_EQ(made[0].attributes, endless);
}

TEST_P(context_attributes_test, a_child_that_cannot_be_made_leaves_a_context_that_is_not_spread) {
  start(4);
  const library::app_window window = ready().window;
  const int before = live_contexts();
  driver::fail_call<wglCreateContextAttribsARB_op>(4);
  const HGLRC context = create(window.hdc);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
  EXPECT_EQ(live_contexts(), before + 1);
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: No child contexts for a context with attributes: it is not "
                                     "spread over the parts.\n"});
  EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  EXPECT_EQ(own_state()->mode, mode_pass);
}

TEST_P(context_attributes_test, beyond_the_registry_s_room_nothing_is_left_over) {
  start();
  const HDC hdc = ready().window.hdc;
  while (!__osw_glrc_registry[max_glrcs - 1].app_hglrc) ASSERT_NE(create(hdc), nullptr);
  const int before = live_contexts();
  const HGLRC context = create(hdc);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
  EXPECT_EQ(live_contexts(), before + 1);
  EXPECT_EQ(library::reports().size(), 1u);
}

// ---- sharing ----

TEST_P(context_attributes_test, a_partner_that_is_current_nowhere_is_shared_with_on_the_calling_thread) {
  start();
  const HDC hdc = ready().window.hdc;
  const HGLRC partner = create(hdc);
  const std::vector<HGLRC> partners = driver::contexts_made_after(partner, 2);
  made.clear();
  const HGLRC context = create(hdc, partner);
  ASSERT_EQ(made.size(), 3u);
  EXPECT_EQ(made[0].share, partner);
  for (std::size_t part = 0; part < 2; ++part) {
    EXPECT_EQ(made[part + 1].share, partners[part]);
    EXPECT_EQ(made[part + 1].thread, GetCurrentThreadId());
    EXPECT_EQ(__osw_glrc_lookup(context)->child_hglrc[part], driver::contexts_made_after(context, 2)[part]);
  }
}

TEST_P(context_attributes_test, a_partner_that_is_current_is_shared_with_by_its_workers) {
  start(4);
  const library::rendering rendered = library::start_rendering();
  const HGLRC context = create(rendered.window.hdc, rendered.context, {major, 3, flags, 1});
  ASSERT_NE(context, nullptr);
  const __osw_glrc* record = __osw_glrc_lookup(context);
  ASSERT_NE(record, nullptr);
  ASSERT_EQ(made.size(), 5u);
  for (int part = 0; part < 4; ++part) {
    const HGLRC partner = rendered.children[static_cast<std::size_t>(part)];
    const DWORD worker = own_state()->started.worker_thread_id[part];
    const auto one = std::ranges::find(made, worker, &creation::thread);
    ASSERT_NE(one, made.end());
    EXPECT_EQ(one->share, partner);
    EXPECT_EQ(one->attributes, (list{major, 3, flags, 1}));
    // It was made with the partner current, where that is so.
    EXPECT_EQ(worker_steps(part).back().call.op, wglCreateContextAttribsARB_op::op);
    EXPECT_EQ(driver::context(record->child_hglrc[part]).made_by, worker);
  }
  EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  EXPECT_TRUE(library::reports().empty());
}

TEST_P(context_attributes_test, a_worker_that_fails_leaves_a_context_that_is_not_spread) {
  start();
  const library::rendering rendered = library::start_rendering();
  const int before = live_contexts();
  driver::set_result_in(rendered.children[1], driver::op_space::wgl, wglCreateContextAttribsARB_op::op, 0);
  const HGLRC context = create(rendered.window.hdc, rendered.context);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
  EXPECT_EQ(live_contexts(), before + 1);
  EXPECT_EQ(library::reports().size(), 1u);
}

TEST_P(context_attributes_test, with_a_partner_that_is_not_spread_none_is) {
  start();
  const HDC hdc = ready().window.hdc;
  const HGLRC partner = create(hdc, nullptr, {profile, device_bit});
  made.clear();
  const HGLRC context = create(hdc, partner);
  EXPECT_NE(context, nullptr);
  EXPECT_EQ(__osw_glrc_lookup(context), nullptr);
  EXPECT_EQ(made.size(), 1u);
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Warning: A context that shares with one without child contexts "
                                     "gets none either.\n"});
}

// Else the partner's children would share with the new ones alone, and could share with no third.
TEST_P(context_attributes_test, what_the_partner_shares_already_its_children_share_first) {
  start();
  ready();
  library::run_on_new_thread([] {
    const library::app_window window = library::open_window();
    const HGLRC first = osw_wglCreateContext(window.hdc);
    const HGLRC partner = osw_wglCreateContext(window.hdc);
    ASSERT_TRUE(osw_wglShareLists(first, partner));
    driver::clear_calls();
    create(window.hdc, partner);
    const __osw_glrc* from = __osw_glrc_lookup(first);
    const __osw_glrc* to = __osw_glrc_lookup(partner);
    EXPECT_EQ(driver::calls_of<wglShareLists_op>(),
              (std::vector{driver::expect<wglShareLists_op>(from->child_hglrc[0], to->child_hglrc[0]),
                           driver::expect<wglShareLists_op>(from->child_hglrc[1], to->child_hglrc[1])}));
  });
}

// ---- profiles ----

struct profile_facts {
  const char* version;
  GLint mask;
  const char* extension;
  bool is_core;
};
void PrintTo(const profile_facts& facts, std::ostream* out) {
  *out << facts.version << ' ' << facts.mask << ' ' << facts.extension;
}

struct context_profile_test : library::process_test, testing::WithParamInterface<profile_facts> {};
INSTANTIATE_TEST_SUITE_P(, context_profile_test,
                         testing::Values(profile_facts{"4.5 (Core Profile)", GL_CONTEXT_CORE_PROFILE_BIT, "", true},
                                         profile_facts{"3.2.1", GL_CONTEXT_CORE_PROFILE_BIT, "", true},
                                         profile_facts{"4.5", GL_CONTEXT_COMPATIBILITY_PROFILE_BIT, "", false},
                                         profile_facts{"3.1", 0, "GL_ARB_sync", true},
                                         profile_facts{"3.1", 0, "GL_ARB_compatibility", false},
                                         profile_facts{"3.0", 0, "GL_ARB_sync", false},
                                         profile_facts{"none", 0, "", false}));

TEST_P(context_profile_test, it_is_asked_at_the_first_binding_and_once) {
  library::start({.extended = true});
  const library::app_window window = ready().window;
  const profile_facts facts = GetParam();
  driver::set_result<glGetString_op>(driver::bits_of(facts.version));
  driver::set_result<glGetStringi_op>(driver::bits_of(facts.extension));
  driver::on_call<glGetIntegerv_op>([&](driver::live_call& live) {
    auto* values = reinterpret_cast<GLint*>(live.what.arguments[1]);
    // What an older version does not know would be an error in the program's context.
    EXPECT_TRUE(live.what.arguments[0] == GL_NUM_EXTENSIONS || facts.mask);
    *values = live.what.arguments[0] == GL_CONTEXT_PROFILE_MASK ? facts.mask : 1;
  });
  const HGLRC context = osw_wglCreateContextAttribsARB(window.hdc, nullptr, nullptr);
  const __osw_glrc* record = __osw_glrc_lookup(context);
  EXPECT_EQ(record->is_core, 0u);
  EXPECT_TRUE(driver::calls_of<glGetString_op>().empty());
  ASSERT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  EXPECT_EQ(record->is_core, facts.is_core ? 1u : 0u);
  EXPECT_EQ(driver::calls_of<glGetString_op>().size(), 1u);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  EXPECT_EQ(driver::calls_of<glGetString_op>().size(), 1u);
}

TEST_P(context_attributes_test, a_plain_context_is_not_asked_for_its_profile) {
  start();
  library::start_rendering();
  EXPECT_TRUE(driver::calls_of<glGetString_op>().empty());
  EXPECT_TRUE(driver::calls_of<glGetIntegerv_op>().empty());
}

// ---- bindings ----

TEST_P(context_attributes_test, one_drawable_for_both_is_bound_as_ever) {
  start();
  const library::rendering rendered = ready();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeContextCurrentARB(rendered.window.hdc, rendered.window.hdc, rendered.context));
  EXPECT_EQ(driver::calls_of<wglMakeContextCurrentARB_op>().size(), 0u);
  EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(rendered.context));
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(driver::context(rendered.children[static_cast<std::size_t>(part)]).current_on,
              own_state()->started.worker_thread_id[part]);
  }
  EXPECT_TRUE(osw_wglMakeContextCurrentEXT(nullptr, nullptr, nullptr));
  EXPECT_EQ(own_state()->mode, mode_no_context);
}

TEST_P(context_attributes_test, with_two_drawables_a_context_is_bound_without_parts) {
  start();
  const library::rendering rendered = library::start_rendering();
  const library::app_window other = library::open_window();
  library::finish();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeContextCurrentARB(rendered.window.hdc, other.hdc, rendered.context));
  ASSERT_FALSE(scene::own_steps().empty());
  EXPECT_EQ(scene::own_steps()[0],
            (in<wglMakeContextCurrentARB_op>(rendered.context, rendered.window.hdc, other.hdc, rendered.context)));
  EXPECT_EQ(own_state()->glrc, nullptr);
  EXPECT_EQ(own_state()->window_mapping, nullptr);
  library::finish();
  driver::clear_calls();
  osw_glPointSize(3);
  EXPECT_EQ(driver::calls_of<glPointSize_op>().size(), 1u);
  EXPECT_EQ(driver::calls_of<glPointSize_op>()[0].context, rendered.context);
  // With one drawable for both it is spread again, although the system has that to draw to already.
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(rendered.context));
  driver::clear_calls();
  osw_glPointSize(4);
  library::finish();
  for (const HGLRC child : rendered.children) {
    EXPECT_EQ(driver::gl_calls_in(child), std::vector<driver::call>{driver::expect<glPointSize_op>(4.0f)});
  }
}

TEST_P(context_attributes_test, two_drawables_that_the_system_refuses_leave_the_binding) {
  start();
  const library::rendering rendered = library::start_rendering();
  driver::set_result<wglMakeContextCurrentARB_op>(0);
  EXPECT_FALSE(osw_wglMakeContextCurrentARB(rendered.window.hdc, nullptr, rendered.context));
  EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(rendered.context));
}

TEST_P(context_attributes_test, nothing_that_is_bound_again_is_the_system_s_to_judge) {
  start();
  driver::set_result<wglMakeCurrent_op>(0);
  EXPECT_FALSE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(driver::calls_of<wglMakeCurrent_op>().size(), 1u);
}

TEST_P(context_attributes_test, what_has_no_window_any_more_the_system_refuses_to_swap) {
  start();
  const library::rendering rendered = library::start_rendering();
  library::finish();
  driver::clear_calls();
  driver::set_result<wglSwapBuffers_op>(0);
  driver::set_result<wglSwapLayerBuffers_op>(0);
  const HDC gone = reinterpret_cast<HDC>(u64{0x12340});
  EXPECT_FALSE(osw_wglSwapBuffers(gone));
  EXPECT_FALSE(osw_wglSwapLayerBuffers(gone, 1));
  EXPECT_FALSE(osw_wglSwapBuffers(nullptr));
  library::finish();
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
  for (const driver::call& call : driver::calls_of<wglSwapBuffers_op>()) EXPECT_EQ(call.context, rendered.context);
}

TEST_P(context_attributes_test, a_binding_that_is_repeated_succeeds_and_touches_nothing) {
  start();
  const library::rendering rendered = library::start_rendering();
  library::finish();
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_TRUE(osw_wglMakeContextCurrentARB(rendered.window.hdc, rendered.window.hdc, rendered.context));
  EXPECT_TRUE(driver::calls_of<wglMakeCurrent_op>().empty());
  EXPECT_EQ(own_state()->glrc, __osw_glrc_lookup(rendered.context));
}

// ---- the list ----

TEST(changed_wgl_list_test, it_has_its_ops) {
  std::vector<std::string> names;
  for_each_changed_wgl_op([&]<class Op>() { names.emplace_back(Op::name); });
  EXPECT_EQ(names, (std::vector<std::string>{
                       "wglMakeCurrent", "wglSwapBuffers", "wglSwapLayerBuffers", "wglUseFontBitmapsA",
                       "wglUseFontBitmapsW", "wglUseFontOutlinesA", "wglUseFontOutlinesW", "wglGetExtensionsStringARB",
                       "wglMakeContextCurrentARB", "wglCreateContextAttribsARB", "wglGetExtensionsStringEXT"}));
}

}  // namespace

// The rows where the wrapper does work of its own, each in every state of a thread: what the thread calls of the
// system, what each part's worker does, and what the application is told.
#include <gtest/gtest.h>

#include "dispatch/lookup.h"
#include "pipeline/cmd_queue.h"
#include "startup/config/monitors.h"
#include "support/wgl_names.h"
#include "support/wgl_situations.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"

namespace {

using scene::driver_context;
using scene::in;
using situations::situation;
using steps = std::vector<scene::step>;

constexpr int parts = 2;
constexpr int some_attributes[] = {WGL_FRONT_LEFT_ARB, 1, 0};

struct context_made {
  HGLRC app = nullptr;
  std::vector<HGLRC> children;  // none in a bypassed process
};

struct pbuffer_made {
  HPBUFFERARB app = nullptr;
  std::vector<HPBUFFERARB> children;  // as above
};

struct wgl_own_rows_test : library::process_test, testing::WithParamInterface<situation> {
  void begin() {
    stage = situations::enter(GetParam());
    window = stage.rendered.window;
  }
  void TearDown() override {
    situations::leave(stage);
    process_test::TearDown();
  }

  bool active() const { return situations::is_active(GetParam()); }
  bool sequential() const { return GetParam() == situation::sequential; }
  bool has_workers() const { return situations::has_workers(GetParam()); }
  void act(const std::function<void()>& work) const { situations::act(stage, work); }

  context_made make_context() const {
    context_made made;
    act([&] { made.app = osw_wglCreateContext(window.hdc); });
    if (active()) made.children = driver::contexts_made_after(made.app, parts);
    situations::forget(stage);
    return made;
  }
  pbuffer_made make_pbuffer() const {
    pbuffer_made made;
    act([&] { made.app = osw_wglCreatePbufferARB(window.hdc, 1, 70, 50, nullptr); });
    for (int part = 0; active() && part < parts; ++part) {
      made.children.push_back(__osw_pbuffer_lookup(made.app)->parts[part].child_hpbuffer);
    }
    situations::forget(stage);
    return made;
  }

  // A call of the thread, with what is current on it.
  template <class Op, class... Arguments>
  scene::step mine(Arguments... arguments) const {
    return in<Op>(stage.current, arguments...);
  }
  // A call of a part's worker, with that part's context current if there is one.
  template <class Op, class... Arguments>
  scene::step of_worker(int part, Arguments... arguments) const {
    return in<Op>(stage.current ? child(part) : nullptr, arguments...);
  }
  HGLRC child(int part) const { return stage.rendered.children.at(static_cast<std::size_t>(part)); }

  // What the thread itself does on the sequential path: `call` on every part, in the part's context.
  void add_round(steps* all, const std::function<driver::call(int part)>& call) const {
    HGLRC from = stage.current;
    for (int part = 0; part < parts; ++part) {
      all->push_back(in<wglFastSwitchContextZ4_op>(from, driver_context(child(part)), 0));
      all->push_back({child(part), call(part)});
      from = child(part);
    }
    all->push_back(in<wglFastSwitchContextZ4_op>(from, driver_context(stage.current), 0));
  }

  void expect(
      const steps& own, const std::function<steps(int part)>& of_part = [](int) { return steps(); }) const {
    situations::expect_calls(stage, own, of_part);
  }
  // What the thread does itself for every part, without a switch.
  void add_each(steps* all, const std::function<scene::step(int part)>& call) const {
    for (int part = 0; active() && part < parts; ++part) all->push_back(call(part));
  }

  situations::stage stage;
  library::app_window window;
};
INSTANTIATE_TEST_SUITE_P(, wgl_own_rows_test, situations::all);

// ---- contexts ----

std::vector<int> ops_of(const std::vector<driver::call>& calls) {
  std::vector<int> ops;
  for (const scene::step& step : scene::steps_of(calls)) ops.push_back(step.call.op);
  return ops;
}

TEST_P(wgl_own_rows_test, create) {
  begin();
  for (const int layer : {0, 3}) {
    driver::clear_calls();
    HGLRC made = nullptr;
    act([&] { made = layer ? osw_wglCreateLayerContext(window.hdc, layer) : osw_wglCreateContext(window.hdc); });
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(driver::calls_of<wglCreateLayerContext_op>(),
              (std::vector{driver::expect<wglCreateLayerContext_op>(window.hdc, layer)}));
    // For each part the format of the window is asked for, set on a hidden window, and a context is made there.
    std::vector<int> expected = {3};
    if (active()) expected.insert(expected.end(), {11, 16, 2, 11, 16, 2});
    EXPECT_EQ(ops_of(driver::calls_of_thread(stage.thread_id)), expected);
    EXPECT_EQ(driver::calls().size(), expected.size());
    EXPECT_EQ(__osw_glrc_lookup(made) != nullptr, active());
  }
}

TEST_P(wgl_own_rows_test, copy) {
  begin();
  const context_made first = make_context();
  const context_made second = make_context();
  act([&] { EXPECT_TRUE(osw_wglCopyContext(first.app, second.app, 0x4F)); });
  steps own = {mine<wglCopyContext_op>(first.app, second.app, 0x4Fu)};
  for (std::size_t part = 0; part < first.children.size(); ++part) {
    own.push_back(mine<wglCopyContext_op>(first.children[part], second.children[part], 0x4Fu));
  }
  expect(own);
}

TEST_P(wgl_own_rows_test, delete_one_that_is_not_current) {
  begin();
  const context_made made = make_context();
  const u32 waits = has_workers() ? stage.state->cmd_queue->send_sync_count : 0;
  act([&] { EXPECT_TRUE(osw_wglDeleteContext(made.app)); });
  if (has_workers()) {
    EXPECT_EQ(stage.state->cmd_queue->send_sync_count, waits + 1);
  }
  steps own;
  if (active()) own.push_back(mine<wglGetCurrentContext_op>());
  own.push_back(mine<wglDeleteContext_op>(made.app));
  for (const HGLRC one : made.children) own.push_back(mine<wglDeleteContext_op>(one));
  expect(own);
  if (active()) {
    EXPECT_EQ(__osw_glrc_lookup(made.app), nullptr);
  }
}

TEST_P(wgl_own_rows_test, delete_the_first_one_bound) {
  begin();
  const library::rendering& rendered = stage.rendered;
  act([&] { EXPECT_TRUE(osw_wglDeleteContext(rendered.context)); });
  steps own;
  if (active()) own.push_back(mine<wglGetCurrentContext_op>());
  own.push_back(mine<wglDeleteContext_op>(rendered.context));
  for (const HGLRC one : rendered.children) own.push_back(in<wglDeleteContext_op>(nullptr, one));
  expect(own, [&](int part) {
    return stage.current ? steps{of_worker<wglMakeCurrent_op>(part, nullptr, nullptr)} : steps();
  });
  for (const driver::context_facts& facts : driver::contexts()) EXPECT_FALSE(facts.live);
}

TEST_P(wgl_own_rows_test, share) {
  begin();
  const context_made first = make_context();
  const context_made second = make_context();
  act([&] { EXPECT_TRUE(osw_wglShareLists(first.app, second.app)); });
  const auto of_part = [&](int part) {
    const auto at = static_cast<std::size_t>(part);
    return steps{of_worker<wglShareLists_op>(part, first.children[at], second.children[at])};
  };
  expect({mine<wglShareLists_op>(first.app, second.app)}, of_part);
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

// ---- look-up and binding ----

TEST_P(wgl_own_rows_test, look_up) {
  begin();
  driver::clear_calls();
  PROC found = nullptr;
  act([&] { found = osw_wglGetProcAddress("glBindBuffer"); });
  EXPECT_EQ(driver::calls_of<wglGetProcAddress_op>().size(), 1u);
  EXPECT_EQ(driver::calls().size(), 1u);
  __osw_proc expected = nullptr;  // the system answers under a current context alone
  if (stage.current) expected = active() ? __osw_find_gl_entry("glBindBuffer") : __osw_sys_gl[glBindBuffer_op::op];
  EXPECT_EQ(reinterpret_cast<__osw_proc>(found), expected);
  EXPECT_EQ(expected != nullptr, stage.current != nullptr);
}

TEST_P(wgl_own_rows_test, bind_another_window) {
  begin();
  const context_made made = make_context();
  library::app_window other;
  act([&] { other = library::open_window({860, 100, 1160, 300}); });
  situations::forget(stage);
  act([&] { EXPECT_TRUE(osw_wglMakeCurrent(other.hdc, made.app)); });
  EXPECT_EQ(driver::context(made.app).current_on, stage.thread_id);
  EXPECT_EQ(stage.state->mode, !active() ? mode_pass : sequential() ? mode_sequential : mode_threaded);
  EXPECT_EQ(scene::child_windows(other.hwnd).size(), active() ? 2u : 0u);
  for (std::size_t part = 0; part < made.children.size(); ++part) {
    const DWORD worker = stage.state->started.worker_thread_id[part];
    EXPECT_EQ(driver::context(made.children[part]).current_on, worker);
    EXPECT_EQ(
        scene::steps_of(driver::calls_of_thread(worker)).at(0).call,
        driver::expect<wglMakeCurrent_op>(scene::mapping_of(other.hwnd).parts[part].child_hdc, made.children[part]));
  }
  act([&] { EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr)); });
  EXPECT_EQ(stage.state->mode, mode_no_context);
  for (const HGLRC one : made.children) EXPECT_EQ(driver::context(one).current_on, 0u);
}

// ---- swaps ----

// Which device context a part presents: that of its child of the window.
HDC child_hdc(HWND hwnd, int part) {
  return scene::mapping_of(hwnd).parts[part].child_hdc;
}

TEST_P(wgl_own_rows_test, swap) {
  begin();
  const bool system_swaps = !has_workers();
  for (const bool layered : {false, true}) {
    situations::forget(stage);
    const i32 frames = stage.state->frame_count;
    act([&] { EXPECT_TRUE(layered ? osw_wglSwapLayerBuffers(window.hdc, 5) : osw_wglSwapBuffers(window.hdc)); });
    steps own;
    if (system_swaps) {
      own = {layered ? mine<wglSwapLayerBuffers_op>(window.hdc, 5u) : mine<wglSwapBuffers_op>(window.hdc)};
    } else if (sequential()) {
      add_round(&own, [&](int part) {
        const HDC hdc = child_hdc(window.hwnd, part);
        return layered ? driver::expect<wglSwapLayerBuffers_op>(hdc, 5u) : driver::expect<wglSwapBuffers_op>(hdc);
      });
    }
    // Through the list every child gets a plain swap.
    expect(own, [&](int part) {
      return sequential() ? steps() : steps{of_worker<wglSwapBuffers_op>(part, child_hdc(window.hwnd, part))};
    });
    const bool counts = GetParam() == situation::threaded || sequential();
    EXPECT_EQ(stage.state->frame_count, frames + counts);
    EXPECT_EQ(library::reports(), std::vector<std::string>());
  }
}

// ---- pbuffers ----

struct pbuffer_names {
  decltype(&osw_wglCreatePbufferARB) create;
  decltype(&osw_wglGetPbufferDCARB) get;
  decltype(&osw_wglReleasePbufferDCARB) release;
  decltype(&osw_wglDestroyPbufferARB) destroy;
};
const pbuffer_names both_names[] = {
    {osw_wglCreatePbufferARB, osw_wglGetPbufferDCARB, osw_wglReleasePbufferDCARB, osw_wglDestroyPbufferARB},
    {osw_wglCreatePbufferEXT, osw_wglGetPbufferDCEXT, osw_wglReleasePbufferDCEXT, osw_wglDestroyPbufferEXT}};

TEST_P(wgl_own_rows_test, the_life_of_a_pbuffer_under_both_names) {
  begin();
  for (const pbuffer_names& names : both_names) {
    situations::forget(stage);
    HPBUFFERARB pbuffer = nullptr;
    act([&] { pbuffer = names.create(window.hdc, 3, 70, 50, some_attributes); });
    const __osw_pbuffer* const record = __osw_pbuffer_lookup(pbuffer);
    ASSERT_EQ(record != nullptr, active());
    const __osw_pbuffer made = record ? *record : __osw_pbuffer{};
    std::vector<driver::call> created = {
        driver::expect<wglCreatePbufferARB_op>(window.hdc, 3, 70, 50, some_attributes)};
    for (int part = 0; active() && part < parts; ++part) {
      const HDC hidden = made.parts[part].hidden_hdc;
      created.push_back(driver::expect<wglCreatePbufferARB_op>(hidden, 3, 70, 50, some_attributes));
    }
    EXPECT_EQ(driver::calls_of<wglCreatePbufferARB_op>(), created);

    situations::forget(stage);
    HDC hdc = nullptr;
    act([&] { hdc = names.get(pbuffer); });
    ASSERT_NE(hdc, nullptr);
    steps own = {mine<wglGetPbufferDCARB_op>(pbuffer)};
    add_each(&own, [&](int part) { return mine<wglGetPbufferDCARB_op>(made.parts[part].child_hpbuffer); });
    expect(own);
    if (active()) {
      EXPECT_EQ(__osw_pbuffer_of_hdc(hdc), record);
    }

    situations::forget(stage);
    act([&] { EXPECT_EQ(names.release(pbuffer, hdc), 1); });
    own = {mine<wglReleasePbufferDCARB_op>(pbuffer, hdc)};
    add_each(&own, [&](int part) {
      return mine<wglReleasePbufferDCARB_op>(made.parts[part].child_hpbuffer, record->parts[part].child_hdc);
    });
    expect(own);

    situations::forget(stage);
    act([&] { EXPECT_TRUE(names.destroy(pbuffer)); });
    own = {mine<wglDestroyPbufferARB_op>(pbuffer)};
    add_each(&own, [&](int part) { return mine<wglDestroyPbufferARB_op>(made.parts[part].child_hpbuffer); });
    expect(own);
    EXPECT_TRUE(driver::pbuffers().empty());
    EXPECT_TRUE(platform::windows_of_class("__osw_glrc_window").empty());
  }
}

// ---- what acts on the bound context ----

// Render to texture. Nobody but a bypassed process binds the application's own pbuffer.
template <class Op>
void check_texture_row(const wgl_own_rows_test& test, const pbuffer_made& pbuffer, BOOL (*call)(HPBUFFERARB, int)) {
  situations::forget(test.stage);
  BOOL result = -1;
  test.act([&] { result = call(pbuffer.app, WGL_FRONT_LEFT_ARB); });
  EXPECT_EQ(result, test.active() && !test.has_workers() ? 0 : 1);
  const auto child = [&](int part) { return pbuffer.children.at(static_cast<std::size_t>(part)); };
  steps own;
  if (!test.active()) own = {test.mine<Op>(pbuffer.app, WGL_FRONT_LEFT_ARB)};
  if (test.sequential())
    test.add_round(&own, [&](int part) { return driver::expect<Op>(child(part), WGL_FRONT_LEFT_ARB); });
  test.expect(own, [&](int part) {
    return test.sequential() ? steps() : steps{test.of_worker<Op>(part, child(part), WGL_FRONT_LEFT_ARB)};
  });
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_P(wgl_own_rows_test, textures) {
  begin();
  const pbuffer_made pbuffer = make_pbuffer();
  check_texture_row<wglBindTexImageARB_op>(*this, pbuffer, osw_wglBindTexImageARB);
  check_texture_row<wglReleaseTexImageARB_op>(*this, pbuffer, osw_wglReleaseTexImageARB);
}

TEST_P(wgl_own_rows_test, attributes) {
  begin();
  const pbuffer_made pbuffer = make_pbuffer();
  act([&] { EXPECT_EQ(osw_wglSetPbufferAttribARB(pbuffer.app, some_attributes), 1); });
  const auto child = [&](int part) { return pbuffer.children.at(static_cast<std::size_t>(part)); };
  steps own = {mine<wglSetPbufferAttribARB_op>(pbuffer.app, some_attributes)};
  if (sequential()) {
    add_round(&own, [&](int part) { return driver::expect<wglSetPbufferAttribARB_op>(child(part), some_attributes); });
  }
  expect(own, [&](int part) {
    if (sequential()) return steps();
    return steps{of_worker<wglSetPbufferAttribARB_op>(part, child(part), some_attributes)};
  });
}

TEST_P(wgl_own_rows_test, interval) {
  begin();
  act([&] { EXPECT_EQ(osw_wglSwapIntervalEXT(3), 1); });
  steps own = {mine<wglSwapIntervalEXT_op>(3)};
  if (sequential()) add_round(&own, [](int) { return driver::expect<wglSwapIntervalEXT_op>(3); });
  expect(own, [&](int part) { return sequential() ? steps() : steps{of_worker<wglSwapIntervalEXT_op>(part, 3)}; });
  // A failure on the application's context is told, and the parts hear of the interval all the same.
  situations::forget(stage);
  driver::fail_call<wglSwapIntervalEXT_op>(1);
  act([&] { EXPECT_EQ(osw_wglSwapIntervalEXT(3), 0); });
  expect(own, [&](int part) { return sequential() ? steps() : steps{of_worker<wglSwapIntervalEXT_op>(part, 3)}; });
}

// ---- refusals ----

// What the system refuses the application goes no further.
template <class Op, class Call>
void check_refusal(const wgl_own_rows_test& test, Call call) {
  situations::forget(test.stage);
  driver::fail_call<Op>(1);
  u64 result = 1;
  test.act([&] { result = driver::bits_of(call()); });
  EXPECT_EQ(result, 0u) << Op::name;
  test.act([] { library::finish(); });
  EXPECT_EQ(driver::calls_of<Op>().size(), 1u) << Op::name;
  EXPECT_EQ(library::reports(), std::vector<std::string>()) << Op::name;
}

TEST_P(wgl_own_rows_test, refused_by_the_system) {
  begin();
  const context_made context = make_context();
  const pbuffer_made pbuffer = make_pbuffer();
  HDC hdc = nullptr;
  act([&] { hdc = osw_wglGetPbufferDCARB(pbuffer.app); });
  const std::size_t contexts = driver::contexts().size();
  const std::size_t pbuffers = driver::pbuffers().size();
  check_refusal<wglCreateLayerContext_op>(*this, [&] { return osw_wglCreateContext(window.hdc); });
  check_refusal<wglCreateLayerContext_op>(*this, [&] { return osw_wglCreateLayerContext(window.hdc, 1); });
  check_refusal<wglCopyContext_op>(*this, [&] { return osw_wglCopyContext(context.app, stage.rendered.context, 1); });
  check_refusal<wglShareLists_op>(*this, [&] { return osw_wglShareLists(stage.rendered.context, context.app); });
  check_refusal<wglMakeCurrent_op>(*this, [&] { return osw_wglMakeCurrent(window.hdc, context.app); });
  check_refusal<wglCreatePbufferARB_op>(*this, [&] { return osw_wglCreatePbufferARB(window.hdc, 1, 8, 8, nullptr); });
  check_refusal<wglGetPbufferDCARB_op>(*this, [&] { return osw_wglGetPbufferDCARB(pbuffer.app); });
  check_refusal<wglReleasePbufferDCARB_op>(*this, [&] { return osw_wglReleasePbufferDCARB(pbuffer.app, hdc); });
  check_refusal<wglDestroyPbufferARB_op>(*this, [&] { return osw_wglDestroyPbufferARB(pbuffer.app); });
  check_refusal<wglSetPbufferAttribARB_op>(*this,
                                           [&] { return osw_wglSetPbufferAttribARB(pbuffer.app, some_attributes); });
  EXPECT_EQ(driver::contexts().size(), contexts);
  EXPECT_EQ(driver::pbuffers().size(), pbuffers);
}

// ---- handles without a record ----

// A handle that the parts know nothing of reaches none of them, is reported once, and disturbs nothing around it.
template <class Op, class Call>
void check_unknown(const wgl_own_rows_test& test, const std::string& report, Call call) {
  situations::forget(test.stage);
  const bool drawing = test.stage.current != nullptr;
  test.act([&] {
    if (drawing) osw_glClear(1);
    call();
    if (drawing) osw_glClear(2);
    library::finish();
  });
  const bool expected = test.has_workers() || (test.active() && Op::op == wglShareLists_op::op);
  EXPECT_EQ(library::reports(), expected ? std::vector{report} : std::vector<std::string>()) << Op::name;
  for (const driver::call& call_made : driver::calls_of<Op>()) EXPECT_EQ(call_made.thread_id, test.stage.thread_id);
  EXPECT_LE(driver::calls_of<Op>().size(), 1u) << Op::name;
  for (int part = 0; drawing && test.active() && part < parts; ++part) {
    EXPECT_EQ(library::part_calls(test.stage.rendered, part),
              (std::vector{driver::expect<glClear_op>(1u), driver::expect<glClear_op>(2u)}));
  }
}

TEST_P(wgl_own_rows_test, handles_without_a_record) {
  begin();
  const context_made known = make_context();
  HGLRC alone = nullptr;
  act([&] { alone = osw_wglCreateContextAttribsARB(window.hdc, nullptr, nullptr); });
  const auto unknown = reinterpret_cast<HPBUFFERARB>(0x99990);
  const std::string warning = "OGLSPANWrapper Warning: ";
  const auto of_pbuffer = [&](const std::string& name) {
    return warning + name + " of a pbuffer without child pbuffers reaches no part.\n";
  };
  const std::string of_context = warning + "wglShareLists of a context without child contexts reaches no part.\n";
  check_unknown<wglShareLists_op>(*this, of_context, [&] { EXPECT_TRUE(osw_wglShareLists(known.app, alone)); });
  check_unknown<wglShareLists_op>(*this, of_context, [&] { EXPECT_TRUE(osw_wglShareLists(alone, known.app)); });
  check_unknown<wglBindTexImageARB_op>(*this, of_pbuffer("wglBindTexImageARB"), [&] {
    EXPECT_EQ(osw_wglBindTexImageARB(unknown, 1), has_workers() && !sequential());
  });
  check_unknown<wglReleaseTexImageARB_op>(*this, of_pbuffer("wglReleaseTexImageARB"), [&] {
    EXPECT_EQ(osw_wglReleaseTexImageARB(unknown, 1), has_workers() && !sequential());
  });
  driver::set_result<wglSetPbufferAttribARB_op>(1);  // as of a pbuffer that found no slot
  check_unknown<wglSetPbufferAttribARB_op>(*this, of_pbuffer("wglSetPbufferAttribARB"), [&] {
    EXPECT_EQ(osw_wglSetPbufferAttribARB(unknown, some_attributes), !sequential());
  });
}

}  // namespace

// What the library does in the basic mode, to the byte: a fixed stream of calls of every op, and of scenes that no call
// makes alone, on each path and with each number of parts. The log of all that reaches the driver and the debugger has
// to be the one it always was, of which the digests below are kept. Where one differs, the test writes the log to a
// file; the same test of an earlier build, with OSW_WRITE_LOGS set, writes the file to compare it with.
#include <algorithm>
#include <cstdlib>
#include <ostream>

#include "support/call_log.h"
#include "support/threaded_call.h"
#include "support/wgl_names.h"
#include "support/wgl_samples.h"
#include "wgl/records/glrc.h"

namespace {

enum class way { no_context, bypassed, sequential, threaded, threaded_asking };

// `threaded_asking`: nothing is answered by the application's own context.
struct scenario {
  const char* name;
  way on;
  int parts;
  u64 digest;
};

constexpr scenario scenarios[] = {
    {"no_context", way::no_context, 2, 0x2530F0B54291B62C},
    {"bypassed", way::bypassed, 2, 0xC867E6AD02739095},
    {"sequential_1", way::sequential, 1, 0x9048DCCD4657FD67},
    {"sequential_2", way::sequential, 2, 0x7249A1A2927C30ED},
    {"sequential_3", way::sequential, 3, 0x21AA7CAA76CB3E7D},
    {"sequential_4", way::sequential, 4, 0x3211FC0F4A164E5B},
    {"threaded_1", way::threaded, 1, 0x7A8DBDC891C6E962},
    {"threaded_2", way::threaded, 2, 0x4FF61CA386F609B4},
    {"threaded_3", way::threaded, 3, 0x48A10F47ED88D32B},
    {"threaded_4", way::threaded, 4, 0x93F5F528E5825461},
    {"threaded_asking_1", way::threaded_asking, 1, 0x7F28E4131EDC2830},
    {"threaded_asking_2", way::threaded_asking, 2, 0xDB32D66DC115770D},
    {"threaded_asking_3", way::threaded_asking, 3, 0x995E85A05ACD1D42},
    {"threaded_asking_4", way::threaded_asking, 4, 0x9C853CD1D19504BF},
};

void PrintTo(const scenario& shown, std::ostream* out) {
  *out << shown.name;
}

// The ops that the basic mode has.
constexpr int basic_ops = 1102;

void forget_client_state() {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (state->glrc) state->glrc->client_state = {};
}

u64 make(const threaded::prepared_call& call, const ops::row& row) {
  return row.call(row.entry, call.arguments);
}

// Each op by itself, with what its pointers lead to.
void call_one_by_one() {
  for (int op = 0; op < basic_ops; ++op) {
    const ops::row& row = ops::of(op);
    forget_client_state();
    const threaded::prepared_call call = threaded::prepare(row);
    call_log::read_nothing();
    for (const threaded::payload& payload : call.payloads) {
      call_log::read(op, payload.argument, payload.bytes.size());
      if (call.travels->op != op) call_log::read(call.travels->op, payload.argument, payload.bytes.size());
    }
    const u64 result = make(call, row);
    if (row.result_size) call_log::add_result(row.name, result, row.result_size == sizeof result);
    call_log::end_section(row.name);
  }
  call_log::read_nothing();
}

// Groups of ops, backwards, without a wait between the calls but those that the calls themselves make.
void call_in_groups() {
  constexpr int group = 48;
  for (int last = basic_ops - 1; last >= 0; last -= group) {
    forget_client_state();
    std::list<threaded::prepared_call> calls;
    for (int op = last; op >= 0 && op > last - group; --op) {
      calls.push_back(threaded::prepare(ops::of(op)));
      make(calls.back(), ops::of(op));
    }
    call_log::end_section("from " + std::string(ops::of(last).name) + " backwards");
  }
  forget_client_state();
}

constexpr GLfloat corners[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
constexpr GLushort indices[] = {2, 0, 1};

void draw_arrays() {
  call_log::read(glVertexPointer_op::op, 3, 9 * sizeof(GLfloat));  // which each of the draws reads
  call_log::read(glDrawElements_op::op, 3, sizeof indices);
  call_log::read(glVertex3fv_op::op, 0, 3 * sizeof(GLfloat));
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glVertexPointer(3, GL_FLOAT, 0, corners);
  osw_glDrawArrays(GL_TRIANGLES, 0, 4);
  osw_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, indices);
  osw_glDrawRangeElements(GL_TRIANGLES, 0, 2, 3, GL_UNSIGNED_SHORT, indices);
  osw_glBegin(GL_POINTS);
  osw_glArrayElement(1);
  osw_glEnd();
  osw_glMultiDrawArrays(GL_POINTS, nullptr, nullptr, 0);
  osw_glInterleavedArrays(GL_V3F, 0, corners);
  osw_glDrawArrays(GL_LINES, 0, 3);
  osw_glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
  osw_glDisableClientState(GL_VERTEX_ARRAY);
  osw_glPopClientAttrib();
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5);
  call_log::end_section("arrays of the application");
  call_log::read_nothing();
  osw_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, reinterpret_cast<const void*>(8));
  osw_glBindBuffer(GL_ARRAY_BUFFER, 6);
  osw_glVertexPointer(3, GL_FLOAT, 12, reinterpret_cast<const void*>(16));
  osw_glDrawArrays(GL_TRIANGLES, 0, 3);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 0);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  call_log::end_section("arrays in buffers");
  forget_client_state();
}

void send_blocks() {
  std::vector<u8> pixels(64 * 4 * 4);
  std::vector<GLfloat> values(4 * 200);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<u8>(3 * i);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<GLfloat>(i);
  call_log::read(glTexImage2D_op::op, 8, pixels.size());
  call_log::read(glUniform4fv_op::op, 2, values.size() * sizeof(GLfloat));
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  osw_glUniform4fv(3, 200, values.data());
  call_log::end_section("blocks");
  call_log::read_nothing();
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 8);
  osw_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 1);
  call_log::read(glTexImage2D_op::op, 8, 4 * (8 + 2));
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  call_log::end_section("a part of an image");
  call_log::read_nothing();
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  osw_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 9);
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, reinterpret_cast<const void*>(64));
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  call_log::end_section("an image in a buffer");
  forget_client_state();
}

void map_buffers() {
  osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  call_log::set_mapped(true);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  call_log::set_mapped(false);
  osw_glMapBufferRange(GL_ARRAY_BUFFER, 16, 32, GL_MAP_WRITE_BIT);
  call_log::set_mapped(true);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  call_log::set_mapped(false);
  call_log::end_section("mapped buffers");
}

void read_and_copy() {
  std::vector<u8> pixels(640 * 4 * 4);
  osw_glReadPixels(100, 10, 400, 4, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 3);
  osw_glReadPixels(0, 0, 640, 4, GL_RGBA, GL_UNSIGNED_BYTE, reinterpret_cast<void*>(16));
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  osw_glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 300, 5, 40, 6);
  osw_glCopyPixels(3, 4, 50, 60, GL_DEPTH);
  call_log::end_section("the window's pixels");
  forget_client_state();
}

void fill_lists() {
  for (GLuint i = 0; i < 11000; ++i) osw_glHint(GL_FOG_HINT, i);
  osw_glFlush();
  osw_glFinish();
  call_log::end_section("more calls than a list holds");
}

// Each wgl function that hands its arguments on as they came.
void call_forwarders(bool active) {
  call_log::answer_wgl(true);
  for (const wgl_sample& sample : wgl_samples()) {
    const bool is_own = sample.op == wglCreateContext_op::op || sample.op == wglMakeCurrent_op::op;
    if (active ? sample.active_target == -2 : is_own) continue;
    const u64 result = sample.call();
    call_log::add_result(sample.name, result & sample.result_mask, false);
    call_log::end_section(sample.name);
  }
  call_log::answer_wgl(false);
}

const std::vector<const char*>& unknown_names() {
  static const std::vector<const char*> names = {
      "glFenceSync",        "glTexStorage2D",    "glDispatchCompute", "glGenSamplers",
      "glSpecializeShader", "glTexStorage2DEXT", "wglUnknown",        "other"};
  return names;
}

void note_look_up(const char* name) {
  const auto found = reinterpret_cast<__osw_proc>(osw_wglGetProcAddress(name));
  const auto* gl = std::find(__osw_gl_entries, __osw_gl_entries + basic_ops, found);
  const auto* wgl = std::find(__osw_wgl_entries, __osw_wgl_entries + wgl_op_count, found);
  u64 answer = found ? 9999 : 0;
  if (gl != __osw_gl_entries + basic_ops) answer = static_cast<u64>(1000 + (gl - __osw_gl_entries));
  if (wgl != __osw_wgl_entries + wgl_op_count) answer = static_cast<u64>(100 + (wgl - __osw_wgl_entries));
  call_log::add_result(name, answer, false);
}

void look_up_names() {
  for (int op = 0; op < basic_ops; ++op) note_look_up(__osw_gl_names[op]);
  for (int op = 0; op < wgl_op_count; ++op) note_look_up(__osw_wgl_names[op]);
  for (const char* name : unknown_names()) {
    driver::set_answer(name, 0x123456);
    note_look_up(name);
  }
  call_log::end_section("names");
}

void show_and_share(const library::rendering& rendered) {
  const HDC hdc = rendered.window.hdc;
  const HGLRC second = osw_wglCreateLayerContext(hdc, 0);
  osw_wglShareLists(rendered.context, second);
  osw_wglCopyContext(rendered.context, second, GL_ALL_ATTRIB_BITS);
  osw_wglSwapIntervalEXT(2);
  osw_wglSwapBuffers(hdc);
  call_log::end_section("a swap");
  osw_wglSwapLayerBuffers(hdc, 1);
  call_log::end_section("a swap of planes");
  osw_wglMakeCurrent(hdc, second);
  osw_glClear(GL_COLOR_BUFFER_BIT);
  call_log::end_section("a second context");
  osw_wglMakeContextCurrentARB(hdc, hdc, second);
  osw_wglMakeCurrent(hdc, rendered.context);
  osw_wglDeleteContext(second);
  call_log::end_section("the first context again");
}

void draw_to_pbuffer(const library::rendering& rendered) {
  constexpr int attributes[] = {WGL_PBUFFER_LARGEST_ARB, 1, 0};
  const HDC hdc = rendered.window.hdc;
  const HPBUFFERARB pbuffer = osw_wglCreatePbufferARB(hdc, 3, 70, 50, attributes);
  const HDC pbuffer_hdc = osw_wglGetPbufferDCARB(pbuffer);
  int width = 0;
  osw_wglQueryPbufferARB(pbuffer, WGL_PBUFFER_WIDTH_ARB, &width);
  osw_wglMakeCurrent(pbuffer_hdc, rendered.context);
  osw_glClear(GL_DEPTH_BUFFER_BIT);
  osw_wglMakeCurrent(hdc, rendered.context);
  osw_wglSetPbufferAttribARB(pbuffer, attributes);
  osw_wglBindTexImageARB(pbuffer, WGL_FRONT_LEFT_ARB);
  osw_wglReleaseTexImageARB(pbuffer, WGL_FRONT_LEFT_ARB);
  osw_wglReleasePbufferDCARB(pbuffer, pbuffer_hdc);
  osw_wglDestroyPbufferARB(pbuffer);
  call_log::end_section("a pbuffer");
}

struct basic_log_test : library::process_test, testing::WithParamInterface<scenario> {
  library::rendering start() {
    const way on = GetParam().on;
    library::start({.active = on != way::bypassed,
                    .parts = GetParam().parts,
                    .way = on == way::sequential ? library::path::sequential : library::path::threaded,
                    .query_on_app_thread = on != way::threaded_asking});
    call_log::begin();
    const library::rendering rendered = library::start_rendering();
    call_log::set_app_context(rendered.context);
    call_log::end_section("the first context");
    return rendered;
  }
};

void call_everything(const library::rendering& rendered, bool active) {
  call_one_by_one();
  call_in_groups();
  draw_arrays();
  send_blocks();
  map_buffers();
  read_and_copy();
  fill_lists();
  look_up_names();
  call_forwarders(active);
  show_and_share(rendered);
  draw_to_pbuffer(rendered);
}

void release() {
  osw_wglMakeCurrent(nullptr, nullptr);
  call_log::end_section("no context");
}

TEST_P(basic_log_test, each_call_reaches_the_driver_as_it_always_has) {
  const scenario& wanted = GetParam();
  const library::rendering rendered = start();
  if (wanted.on == way::no_context) {
    release();
    call_one_by_one();
    look_up_names();
    call_forwarders(true);
  } else {
    call_everything(rendered, wanted.on != way::bypassed);
    release();
  }
  osw_wglDeleteContext(rendered.context);
  call_log::end_section("end");
  const std::string file = std::string("basic_log_") + wanted.name + ".txt";
  if (getenv("OSW_WRITE_LOGS")) call_log::write(file);
  if (call_log::digest() == wanted.digest) return;
  ADD_FAILURE() << "the basic mode does something else than it always did. The log is in " << call_log::write(file)
                << ", to be compared with that of an earlier build. Its digest is 0x" << std::hex << std::uppercase
                << call_log::digest();
}

INSTANTIATE_TEST_SUITE_P(all, basic_log_test, testing::ValuesIn(scenarios),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace

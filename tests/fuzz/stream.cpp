#include "stream.h"

#include <algorithm>
#include <sstream>

#include "pipeline/push.h"
#include "support/threaded_call.h"
#include "wgl/records/window_mapping.h"
#include "wide_stream.h"

namespace fuzz {

namespace {

// What one of the driver's contexts has noted. Written by the thread that has the context current.
struct notes {
  HGLRC context = nullptr;
  gl_context state;
  std::vector<event> seen;
};

constexpr int most_contexts = 1 + most_parts;
notes contexts[most_contexts];  // the application's own, then the parts'
int context_count;

void note(driver::live_call& live) {
  if (live.what.space != driver::op_space::gl) return;
  for (int i = 0; i < context_count; ++i) {
    notes& own = contexts[i];
    if (own.context != live.what.context) continue;
    own.seen.push_back(receive(&own.state, live.what.op, live.what.arguments));
    live.result = answer_of(own.seen.back());
    return;
  }
}

void watch(const library::rendering& rendered, library::path way) {
  context_count = 1 + static_cast<int>(rendered.children.size());
  for (int i = 0; i < context_count; ++i) {
    contexts[i] = {};
    contexts[i].context = i == 0 ? rendered.context : rendered.children[static_cast<std::size_t>(i - 1)];
    contexts[i].state.part = i - 1;
    contexts[i].state.keeps_attribs = way == library::path::sequential;
  }
  driver::record(driver::recording::digest);
  driver::on_every_call(note);
}

// ---- comparison ----

const char* fault_of(const expected_event& expected, const event& seen) {
  const event& told = expected.what;
  if (seen.op != told.op) return "another function";
  if (seen.values != told.values) return "other values";
  switch (expected.become) {
    case pointers::as_given:
      if (seen.pointers != told.pointers) return "another pointer than the application's";
      return seen.memory == told.memory ? nullptr : "other memory behind the application's pointer";
    case pointers::copied:
      if (!seen.has_pointer) return "no pointer";
      if (seen.pointers == told.pointers) return "the application's own pointer";
      return seen.memory == told.memory ? nullptr : "other memory behind a copy";
    case pointers::aimed:
      return seen.memory == told.memory ? nullptr : "other memory";
    case pointers::zeroed:
      if (!seen.has_pointer) return "no pointer for null";
      return seen.head == 0 ? nullptr : "a first slot for null that is not zero";
  }
  return nullptr;
}

const char* name_of(int op) {
  return driver::name_of(driver::op_space::gl, op);
}

// The functions around the place where two lists part.
std::string describe(const std::vector<expected_event>& expected, const std::vector<event>& seen, std::size_t at,
                     const char* fault) {
  std::ostringstream text;
  text << fault << " at " << at << " of " << expected.size() << " expected and " << seen.size() << " received;";
  const std::size_t from = at > 4 ? at - 4 : 0;
  text << " expected:";
  for (std::size_t i = from; i < std::min(at + 4, expected.size()); ++i) text << ' ' << name_of(expected[i].what.op);
  text << "; received:";
  for (std::size_t i = from; i < std::min(at + 4, seen.size()); ++i) text << ' ' << name_of(seen[i].op);
  return text.str();
}

std::string compare(const std::vector<expected_event>& expected, const std::vector<event>& seen) {
  for (std::size_t i = 0; i < std::min(expected.size(), seen.size()); ++i) {
    if (const char* fault = fault_of(expected[i], seen[i])) return describe(expected, seen, i, fault);
  }
  if (expected.size() == seen.size()) return {};
  return describe(expected, seen, std::min(expected.size(), seen.size()), "another number of calls");
}

void fail(stream* run, const std::string& what) {
  if (!run->failure.empty()) return;
  run->failure = "after " + std::to_string(run->calls) + " calls: " + what;
}

void wait_for_parts(stream* run) {
  if (run->expected.way == library::path::threaded) __osw_send_sync_cmd(__osw_fetch_thread_state());
}

// ---- one call ----

// Large enough for a read of pixels of the application's.
u64 shadowed_bytes(const ops::row& row, const driver::argument_bits& arguments, const app_memory& memory) {
  if (row.op != glReadPixels_op::op || arguments[6] < lowest_address || memory.of_call.empty()) return 0;
  return memory.of_call.back().size;
}

void check_result(stream* run, const ops::row& row, u64 result) {
  if (!row.result_size || !run->expected.knows_result) return;
  if (result != run->expected.result) fail(run, std::string("another result of ") + row.name);
}

// A query's result has been written by whoever was asked.
void check_written(stream* run, const ops::row& row, const driver::argument_bits& arguments, const event& direct) {
  const int body = row.threaded == ops::family::alias ? row.base : row.op;
  if (ops::of(body).threaded != ops::family::query || writes_figures(body)) return;
  if (!run->expected.mirrors && body == glGetQueryObjectui64v_op::op) return;
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer || row.parameters[i].is_const || arguments[i] < lowest_address) continue;
    if (*reinterpret_cast<const u8*>(arguments[i]) != written_by(direct)) {
      fail(run, std::string("a result not written by ") + row.name);
    }
  }
}

// By whom the call is answered, as an event of the function that travels.
event answering_event(const stream& run, const ops::row& row, const driver::argument_bits& arguments) {
  const bool forwards = row.threaded == ops::family::alias && run.expected.way == library::path::threaded;
  const ops::row& travels = forwards ? ops::of(row.base) : row;
  gl_context nobody;
  nobody.expects = true;
  nobody.unpack_buffer = nobody.pack_buffer = 1;
  return receive(&nobody, travels.op, ops::noted(travels, arguments).arguments);
}

}  // namespace

void make_call(stream* run, const ops::row& row, const driver::argument_bits& arguments) {
  if (!run->failure.empty()) return;
  if (run->extended) return make_wide_call(run, row, arguments);
  const u64 read = shadowed_bytes(row, arguments, run->memory);
  const auto* pixels = reinterpret_cast<const u8*>(arguments[6]);
  std::vector<u8> shadow(pixels, pixels + read);
  expect(&run->expected, row, arguments, shadow.data());
  const bool is_query = ops::of(row.base >= 0 ? row.base : row.op).threaded == ops::family::query;
  const event direct = is_query ? answering_event(*run, row, arguments) : event{};
  ++run->calls;
  const u64 result = row.call(row.entry, arguments);
  check_result(run, row, result);
  if (is_query) check_written(run, row, arguments, direct);
  if (!std::equal(shadow.begin(), shadow.end(), pixels)) fail(run, "other pixels read");
  ruin_blocks_of_call(&run->memory);
}

void make_call(stream* run, int op, std::initializer_list<u64> arguments) {
  make_call(run, ops::of(op), args(arguments));
}

void begin(stream* run, const library::process_setup& setup) {
  // Over the middle of the screen, so that each of two or four parts has a share; over three of more parts in a row.
  constexpr RECT over_the_middle = {700, 400, 1300, 800};
  constexpr RECT over_three = {700, 100, 1300, 500};
  const bool split = setup.parts == 2 || setup.parts == 4;
  const RECT window = split ? over_the_middle : setup.parts == 1 ? RECT{50, 50, 350, 350} : over_three;
  library::start(setup);
  run->rendered = library::start_rendering(window);
  begin(&run->memory);
  wait_for_parts(run);
  begin(&run->expected, setup, window);
  run->extended = setup.extended;
  if (run->extended) {
    begin(&run->wide, setup, window);
    watch_wide(run);
  } else {
    watch(run->rendered, setup.way);
  }
  for (const std::string& name : ops::ops_without_shape()) fail(run, name + " has no shape in call_shapes.cpp");
}

namespace {

void compare_contexts(stream* run) {
  for (int i = 0; i < context_count; ++i) {
    auto& expected = i == 0 ? run->expected.app_events : run->expected.part_events[static_cast<std::size_t>(i - 1)];
    const std::string fault = compare(expected, contexts[i].seen);
    const std::string who = i == 0 ? "the application's own context: " : "part " + std::to_string(i - 1) + ": ";
    if (!fault.empty()) fail(run, who + fault);
    expected.clear();
    contexts[i].seen.clear();
  }
}

}  // namespace

bool check(stream* run) {
  wait_for_parts(run);
  if (run->extended) {
    const std::string fault = compare_wide(run);
    if (!fault.empty()) fail(run, fault);
  } else {
    compare_contexts(run);
  }
  free_kept_blocks(&run->memory);
  platform::clear_debug_output();
  return run->failure.empty();
}

namespace {

// How long a stretch of calls is, between two looks, and what it is made of. Long ones without an op that waits fill
// whole lists.
struct stretch {
  u32 calls;
  u32 waiting_one_in;  // how rarely an op is chosen that waits; 0 for never
};

constexpr stretch stretches[] = {{300, 8}, {300, 8}, {300, 3}, {40, 1}, {1000, 40}, {1000, 0}, {6000, 0}};

bool waits(const stream& run, const ops::row& row) {
  const ops::row& travels = row.threaded == ops::family::alias ? ops::of(row.base) : row;
  if (run.expected.mirrors && travels.threaded == ops::family::query) return false;
  return travels.sync || is_copy(travels.op) || travels.op == glArrayElement_op::op;
}

const ops::row& choose_row(stream* run, const stretch& now) {
  const bool may_wait = now.waiting_one_in && one_in(&run->random, now.waiting_one_in);
  for (;;) {
    // Of a tenth, the functions whose memory is hardest to follow.
    constexpr int hard[] = {glDrawArrays_op::op,         glDrawElements_op::op,
                            glDrawRangeElements_op::op,  glArrayElement_op::op,
                            glTexSubImage2D_op::op,      glTexImage3D_op::op,
                            glPixelStorei_op::op,        glBindBuffer_op::op,
                            glEnableClientState_op::op,  glEnableVertexAttribArray_op::op,
                            glDisableClientState_op::op, glDisableVertexAttribArray_op::op,
                            glBufferData_op::op,         glShaderSource_op::op,
                            glClientActiveTexture_op::op};
    const int op =
        one_in(&run->random, 6) ? one_of(&run->random, hard) : static_cast<int>(bits(&run->random, 2) % gl_op_count);
    const ops::row& row = ops::of(op);
    if (may_wait || !waits(*run, row) || has_ended(run->random)) return row;
  }
}

}  // namespace

void make_calls(stream* run, u64 count) {
  const u64 last = run->calls + count;
  while (run->calls < last && !has_ended(run->random) && run->failure.empty()) {
    const stretch now = one_of(&run->random, stretches);
    for (u32 i = 0; i < now.calls && run->calls < last && !has_ended(run->random); ++i) {
      if (run->extended) {
        choose_wide_call(run, now.waiting_one_in && one_in(&run->random, now.waiting_one_in));
      } else {
        choose_call(run, choose_row(run, now));
      }
    }
    check(run);
  }
}

void reset_state(stream* run) {
  constexpr GLenum zeroes[] = {GL_PACK_SWAP_BYTES,     GL_PACK_LSB_FIRST,    GL_PACK_ROW_LENGTH,  GL_PACK_SKIP_ROWS,
                               GL_PACK_SKIP_PIXELS,    GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_IMAGES, GL_UNPACK_SWAP_BYTES,
                               GL_UNPACK_LSB_FIRST,    GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                               GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_IMAGES};
  for (const GLenum name : zeroes) make_call(run, glPixelStorei_op::op, {name, 0});
  for (const GLenum name : {GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT}) make_call(run, glPixelStorei_op::op, {name, 4});
  for (const GLenum target :
       {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_FRAMEBUFFER}) {
    make_call(run, glBindBuffer_op::op, {static_cast<u64>(target), 0});
  }
  for (u64 attribute = 0; attribute < 16; ++attribute) {
    make_call(run, glDisableVertexAttribArray_op::op, {attribute});
    make_call(run, glVertexAttribPointer_op::op, {attribute, 4, GL_FLOAT, 0, 0, 0});
  }
  for (const GLenum array : {GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_NORMAL_ARRAY, GL_FOG_COORD_ARRAY,
                             GL_SECONDARY_COLOR_ARRAY, GL_INDEX_ARRAY, GL_EDGE_FLAG_ARRAY}) {
    make_call(run, glDisableClientState_op::op, {static_cast<u64>(array)});
  }
  for (u64 unit = 0; unit < 8; ++unit) {
    make_call(run, glClientActiveTexture_op::op, {GL_TEXTURE0 + unit});
    make_call(run, glDisableClientState_op::op, {GL_TEXTURE_COORD_ARRAY});
    make_call(run, glTexCoordPointer_op::op, {4, GL_FLOAT, 0, 0});
  }
  make_call(run, glClientActiveTexture_op::op, {GL_TEXTURE0});
  make_call(run, glVertexPointer_op::op, {4, GL_FLOAT, 0, 0});
  make_call(run, glColorPointer_op::op, {4, GL_FLOAT, 0, 0});
  make_call(run, glNormalPointer_op::op, {GL_FLOAT, 0, 0});
  make_call(run, glFogCoordPointer_op::op, {GL_FLOAT, 0, 0});
  make_call(run, glSecondaryColorPointer_op::op, {3, GL_FLOAT, 0, 0});
  make_call(run, glIndexPointer_op::op, {GL_FLOAT, 0, 0});
  make_call(run, glEdgeFlagPointer_op::op, {0, 0});
  check(run);
}

void end(stream* run) {
  end(&run->memory);
}

}  // namespace fuzz

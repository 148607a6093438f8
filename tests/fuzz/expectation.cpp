#include "expectation.h"

#include <algorithm>

#include "dispatch/thread_state.h"
#include "wgl/records/window_mapping.h"

namespace fuzz {

namespace {

constexpr RECT one_monitor = {0, 0, 1920, 1080};

// The monitor of a part, or the part of the one monitor, as the set-up of a test process makes them.
RECT screen_of(const library::process_setup& setup, int part) {
  if (setup.parts != 2 && setup.parts != 4) return {400 * part, 0, 400 * part + 400, 600};
  const LONG middle_x = one_monitor.right / 2;
  const LONG middle_y = one_monitor.bottom / 2;
  RECT screen = one_monitor;
  (part % 2 == 0 ? screen.right : screen.left) = middle_x;
  if (setup.parts == 4) (part < 2 ? screen.bottom : screen.top) = middle_y;
  return screen;
}

share share_of(const library::process_setup& setup, const RECT& window, int part) {
  share found{};
  const RECT screen = screen_of(setup, part);
  found.part = {std::max(screen.left, window.left) - window.left, std::max(screen.top, window.top) - window.top,
                std::min(screen.right, window.right) - window.left,
                std::min(screen.bottom, window.bottom) - window.top};
  found.visible = found.part.left < found.part.right && found.part.top < found.part.bottom;
  if (!found.visible) return found;
  found.offset_x = -found.part.left;
  found.offset_y = found.part.bottom - (window.bottom - window.top);
  return found;
}

// A null array that is small becomes a zeroed slot, a large one stays null.
pointers array_rule(const call_shape& shape, const ops::row& row, const driver::argument_bits& arguments) {
  constexpr u64 slots = 32;
  const auto count = static_cast<i32>(arguments[shape.count_at]);
  const u64 bytes = count > 0 ? static_cast<u64>(count) * shape.item_bytes : 0;
  const bool is_null = arguments[shape.data_at] == 0;
  if (!is_null) return pointers::copied;
  return bytes <= (slots - row.count) * 8 ? pointers::zeroed : pointers::as_given;
}

// Images, compressed data, maps and the stipple: an offset into a bound buffer stays what it is, and so does null.
pointers block_rule(const expectation& all, const call_shape& shape, const driver::argument_bits& arguments) {
  if (shape.unpacks && all.record.unpack_buffer) return pointers::as_given;
  return arguments[shape.data_at] ? pointers::copied : pointers::as_given;
}

// More than a block can hold: the parts get a call that does nothing.
bool is_too_large(const call_shape& shape, const driver::argument_bits& arguments) {
  const auto count = static_cast<i32>(arguments[shape.count_at]);
  return arguments[shape.data_at] && count > 0 && static_cast<u64>(count) * shape.item_bytes > 0x7FFFFFFF;
}

void expect_array(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  const call_shape& shape = shape_of(row.op);
  expect_mirror(all, row.op, arguments);
  driver::argument_bits sent = arguments;
  const bool too_large = is_too_large(shape, arguments);
  if (too_large) sent[shape.count_at] = sent[shape.data_at] = 0;
  expect_parts(all, row.op, sent, too_large ? pointers::as_given : array_rule(shape, row, arguments));
}

// Images and maps reach the parts as one block or not at all.
void expect_block(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  const call_shape& shape = shape_of(row.op);
  expect_mirror(all, row.op, arguments);
  const bool copies = arguments[shape.data_at] && !all->record.unpack_buffer;
  const bool too_large = row.threaded == ops::family::image
                             ? lay_out(image_of(shape, row, arguments), all->record.unpack).too_large
                             : is_too_large(shape, arguments);
  if (!copies || !too_large) expect_parts(all, row.op, arguments, block_rule(*all, shape, arguments));
}

void expect_everywhere(expectation* all, int op, const driver::argument_bits& arguments, pointers become) {
  expect_mirror(all, op, arguments);
  expect_parts(all, op, arguments, become);
}

// The application's own context gets storage and no contents.
void expect_buffer_data(expectation* all, int op, const driver::argument_bits& arguments, u32 data_at) {
  driver::argument_bits without_data = arguments;
  without_data[data_at] = 0;
  expect_mirror(all, op, without_data);
  const auto size = static_cast<std::int64_t>(arguments[data_at - 1]);
  const bool copies = arguments[data_at] && size >= 0;
  driver::argument_bits sent = arguments;
  if (!copies) sent[data_at] = 0;
  expect_parts(all, op, sent, copies ? pointers::copied : pointers::as_given);
}

// The parts get all strings as one, without lengths.
void expect_source(expectation* all, const driver::argument_bits& arguments) {
  expect_mirror(all, glShaderSource_op::op, arguments);
  const event direct = receive(&all->record, glShaderSource_op::op, arguments);
  const GLchar* const nothing = "";
  for (int part = 0; part < all->parts; ++part) {
    const event sent = expect_part(all, part, glShaderSource_op::op,
                                   args({arguments[0], 1, driver::bits_of(&nothing), 0}), pointers::copied);
    expected_event& last = all->part_events[static_cast<std::size_t>(part)].back();
    last.what = sent;
    last.what.memory = direct.memory;
  }
}

// Names of display lists: more than a block can hold are none.
void expect_lists(expectation* all, const driver::argument_bits& arguments) {
  expect_mirror(all, glCallLists_op::op, arguments);
  const auto count = static_cast<i32>(arguments[0]);
  const bool too_large =
      arguments[2] && count > 0 && static_cast<u64>(count) * list_bytes(static_cast<GLenum>(arguments[1])) > 0x7FFFFFFF;
  driver::argument_bits sent = arguments;
  if (too_large) sent[0] = sent[2] = 0;
  expect_parts(all, glCallLists_op::op, sent, sent[2] ? pointers::copied : pointers::as_given);
}

void expect_own(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  const call_shape& shape = shape_of(row.op);
  switch (row.op) {
    case glDrawArrays_op::op:
    case glDrawElements_op::op:
    case glDrawRangeElements_op::op:
      return expect_draw(all, row, arguments);
    case glArrayElement_op::op:
      return expect_array_element(all, arguments);
    case glBufferData_op::op:
      return expect_buffer_data(all, row.op, arguments, 2);
    case glBufferSubData_op::op:
      return expect_buffer_data(all, row.op, arguments, 3);
    case glShaderSource_op::op:
      return expect_source(all, arguments);
    case glReadPixels_op::op:  // the pixels exist only on the parts
      for (int part = 0; part < all->parts; ++part) expect_read(all, part, arguments);
      return;
    case glGetBufferSubData_op::op:  // contents exist only on the parts
      return expect_parts(all, row.op, arguments);
    case glDrawBuffers_op::op:
      if (is_too_large(shape, arguments)) return expect_mirror(all, row.op, arguments);
      [[fallthrough]];
    case glBindAttribLocation_op::op:
      return expect_everywhere(all, row.op, arguments, arguments[shape.data_at] ? pointers::copied : pointers::zeroed);
    case glPixelMapfv_op::op:
    case glPixelMapuiv_op::op:
    case glPixelMapusv_op::op:
      return expect_block(all, row, arguments);
    case glCallLists_op::op:
      return expect_lists(all, arguments);
    case glPolygonStipple_op::op:
      return expect_everywhere(all, row.op, arguments, block_rule(*all, shape, arguments));
    default:
      // Setters, creation, glFinish and glFlush; and glUniformMatrix2x3fv, which hands the application's own pointer
      // on.
      if (is_copy(row.op)) return expect_threaded_copy(all, row.op, arguments);
      return expect_everywhere(all, row.op, arguments, pointers::as_given);
  }
}

// The offset is that of each part's window, whatever the application says.
void expect_viewport_offset(expectation* all, const driver::argument_bits& arguments) {
  expect_mirror(all, glViewportOffsetZ4_op::op, arguments);
  for (int part = 0; part < all->parts; ++part) {
    const share& own = all->shares[static_cast<std::size_t>(part)];
    expect_part(all, part, glViewportOffsetZ4_op::op,
                args({driver::bits_of(own.offset_x), driver::bits_of(own.offset_y)}));
  }
}

// The application's own context answers; the parts are asked when it does not follow. One query's result lands in the
// record then.
void expect_query(expectation* all, int op, const driver::argument_bits& arguments) {
  if (all->mirrors) return expect_mirror(all, op, arguments);
  expect_parts(all, op, arguments, op == glGetQueryObjectui64v_op::op ? pointers::aimed : pointers::as_given);
}

u64 low_bytes(u64 bits, u32 size) {
  return size >= 8 ? bits : bits & ((u64{1} << size * 8) - 1);
}

// What the call must return: all contexts answer alike.
u64 result_of(const expectation& all, const ops::row& row) {
  const auto& events = all.way == library::path::threaded && all.mirrors ? all.app_events : all.part_events[0];
  for (auto seen = events.rbegin(); seen != events.rend(); ++seen) {
    if (seen->what.op == row.op) return low_bytes(answer_of(seen->what), row.result_size);
  }
  return 0;
}

}  // namespace

void begin(expectation* all, const library::process_setup& setup, const RECT& window) {
  all->way = setup.way;
  all->mirrors = setup.query_on_app_thread;
  all->parts = setup.parts;
  all->client_height = window.bottom - window.top;
  for (int part = 0; part < setup.parts; ++part) {
    const auto at = static_cast<std::size_t>(part);
    all->shares[at] = share_of(setup, window, part);
    all->part[at].part = part;
    all->part[at].expects = true;
    all->part[at].keeps_attribs = all->way == library::path::sequential;
  }
  all->app.expects = true;
  all->record.expects = true;
  all->record.keeps_attribs = all->way == library::path::sequential;
}

driver::argument_bits args(std::initializer_list<u64> values) {
  driver::argument_bits bits = {};
  std::copy(values.begin(), values.end(), bits.begin());
  return bits;
}

event expect_app(expectation* all, int op, const driver::argument_bits& arguments, pointers become) {
  const event seen = receive(&all->app, op, ops::noted(ops::of(op), arguments).arguments);
  all->app_events.push_back({seen, become});
  return seen;
}

event expect_part(expectation* all, int part, int op, const driver::argument_bits& arguments, pointers become) {
  const auto at = static_cast<std::size_t>(part);
  const event seen = receive(&all->part[at], op, ops::noted(ops::of(op), arguments).arguments);
  all->part_events[at].push_back({seen, become});
  return seen;
}

void expect_parts(expectation* all, int op, const driver::argument_bits& arguments, pointers become) {
  for (int part = 0; part < all->parts; ++part) expect_part(all, part, op, arguments, become);
}

void expect_mirror(expectation* all, int op, const driver::argument_bits& arguments, pointers become) {
  if (all->mirrors) expect_app(all, op, arguments, become);
}

void expect_question(expectation* all, int op, std::initializer_list<u64> values) {
  u64 anywhere = 0;
  driver::argument_bits question = args(values);
  question[values.size()] = driver::bits_of(&anywhere);
  if (all->mirrors) {
    expect_app(all, op, question, pointers::aimed);
  } else {
    expect_parts(all, op, question, pointers::aimed);
  }
}

void expect_threaded(expectation* all, const ops::row& travels, const driver::argument_bits& arguments) {
  const call_shape& shape = shape_of(travels.op);
  switch (travels.threaded) {
    case ops::family::plain:
      if (travels.op == glViewportOffsetZ4_op::op) return expect_viewport_offset(all, arguments);
      return expect_everywhere(all, travels.op, arguments, pointers::as_given);
    case ops::family::query:
      return expect_query(all, travels.op, arguments);
    case ops::family::vector: {
      const bool is_null = arguments[travels.count - 1] == 0;
      return expect_everywhere(all, travels.op, arguments, is_null ? pointers::zeroed : pointers::copied);
    }
    case ops::family::parameters:
      return expect_everywhere(all, travels.op, arguments,
                               arguments[shape.data_at] ? pointers::copied : pointers::zeroed);
    case ops::family::names:
    case ops::family::uniform:
      return expect_array(all, travels, arguments);
    case ops::family::image:
    case ops::family::compressed:
      return expect_block(all, travels, arguments);
    case ops::family::own:
      return expect_own(all, travels, arguments);
    case ops::family::alias:
    case ops::family::items:
    case ops::family::text:
    case ops::family::texel:
    case ops::family::arrays:
    case ops::family::create:
    case ops::family::app_only:
    case ops::family::none:
      return;  // of no op of the basic mode, but for aliases, which never travel
  }
}

void expect(expectation* all, const ops::row& row, const driver::argument_bits& arguments, u8* shadow) {
  for (gl_context& context : all->part) context.pixel_shadow = shadow;
  all->knows_result = true;
  const ops::row& travels = row.threaded == ops::family::alias ? ops::of(row.base) : row;
  if (all->way == library::path::threaded) {
    expect_threaded(all, travels, arguments);
    all->result = row.result_size ? result_of(*all, travels) : 0;
  } else {
    expect_sequential(all, row, arguments);
    all->result = row.result_size && !row.is_driver_op ? result_of(*all, row) : 0;
  }
  // What the library keeps of the call: what the application said, whatever went out.
  gl_context& record = all->record;
  const driver::argument_bits noted = ops::noted(row, arguments).arguments;
  if (travels.op != glReadPixels_op::op) receive(&record, row.op, noted);
}

}  // namespace fuzz

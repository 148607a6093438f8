// Framebuffer copies on the sequential path, step by step: each switch of context and each call, in order.
#include "support/pixel_state.h"
#include "support/sequential_steps.h"

namespace {

using pixel_state::store_value;
using sequential::step;
using call_list = std::vector<driver::call>;

// In the order in which the fields are saved, cleared and put back; the first two are flags.
constexpr store_value pack_values[] = {{GL_PACK_SWAP_BYTES, 1}, {GL_PACK_LSB_FIRST, 1},   {GL_PACK_ROW_LENGTH, 3},
                                       {GL_PACK_SKIP_ROWS, 4},  {GL_PACK_SKIP_PIXELS, 5}, {GL_PACK_IMAGE_HEIGHT, 6},
                                       {GL_PACK_SKIP_IMAGES, 7}};
constexpr store_value unpack_values[] = {
    {GL_UNPACK_SWAP_BYTES, 1},   {GL_UNPACK_LSB_FIRST, 1},     {GL_UNPACK_ROW_LENGTH, 13}, {GL_UNPACK_SKIP_ROWS, 14},
    {GL_UNPACK_SKIP_PIXELS, 15}, {GL_UNPACK_IMAGE_HEIGHT, 16}, {GL_UNPACK_SKIP_IMAGES, 17}};

driver::call ask(GLenum name) {
  return driver::expect<glGetIntegerv_op>(name, nullptr);
}

driver::call bind(GLenum target, GLuint buffer) {
  return driver::expect<glBindBuffer_op>(target, buffer);
}

driver::call store(GLenum name, GLint value) {
  return driver::expect<glPixelStorei_op>(name, value);
}

call_list save(const store_value (&fields)[7]) {
  call_list calls;
  for (const store_value& one : fields) {
    const bool is_flag = &one < fields + 2;
    calls.push_back(is_flag ? driver::expect<glGetBooleanv_op>(one.name, nullptr) : ask(one.name));
  }
  return calls;
}

call_list restore(const store_value (&fields)[7]) {
  call_list calls;
  for (const store_value& one : fields) calls.push_back(store(one.name, one.value));
  return calls;
}

call_list save_and_clear(const store_value (&fields)[7]) {
  call_list calls = save(fields);
  for (const store_value& one : fields) calls.push_back(store(one.name, 0));
  return calls;
}

void append_placement(call_list* calls, GLint row_length, GLint image_height, GLint skip_pixels) {
  calls->push_back(store(GL_PACK_ROW_LENGTH, row_length));
  calls->push_back(store(GL_PACK_IMAGE_HEIGHT, image_height));
  calls->push_back(store(GL_PACK_SKIP_ROWS, 0));
  calls->push_back(store(GL_PACK_SKIP_PIXELS, skip_pixels));
}

// A part's read of `columns` from `x` on, of an image of 4 by 2 pixels from row 20 on.
call_list read(GLint x, GLsizei columns, GLint skip_pixels) {
  call_list calls = {ask(GL_PACK_ROW_LENGTH), ask(GL_PACK_IMAGE_HEIGHT), ask(GL_PACK_SKIP_ROWS),
                     ask(GL_PACK_SKIP_PIXELS)};
  append_placement(&calls, 4, 2, skip_pixels);
  calls.push_back(driver::expect<glReadPixels_op>(x, 20, columns, 2, GL_RGBA, GL_UNSIGNED_BYTE, nullptr));
  append_placement(&calls, 0, 0, 0);
  return calls;
}

// A window over two parts, whose seam lies at its column 300.
struct copy_trace_test : library::process_test {
  void SetUp() override {
    rendered = sequential::start({.parts = 2, .parts_are_monitors = true});
    pixel_state::serve(rendered);
  }
  void add(const std::vector<step>& more) { sequential::append(&expected, more); }
  void add_first(const call_list& calls) { add(sequential::on_first_part(rendered, calls)); }
  void add_each(const call_list& calls) { add(sequential::on_each_part(rendered, calls)); }
  void add_reads(const call_list& left, const call_list& right) {
    const call_list* of_part[] = {&left, &right};
    for (std::size_t part : {0, 1}) {
      expected.push_back(sequential::switch_to(rendered.children[part]));
      for (const driver::call& one : *of_part[part]) expected.push_back({rendered.children[part], one});
    }
    expected.push_back(sequential::switch_to(rendered.context));
  }
  void expect_trace() {
    expected.push_back(sequential::switch_to(rendered.context));
    EXPECT_EQ(sequential::steps_without_addresses({glGetIntegerv_op::op, glGetBooleanv_op::op, glReadPixels_op::op,
                                                   glTexImage2D_op::op, glDrawPixels_op::op}),
              expected);
  }
  library::rendering rendered;
  std::vector<step> expected;
};

// Part 0 has nothing to put aside, and that answers for part 1.
TEST_F(copy_trace_test, a_copy_to_a_texture_that_finds_nothing_to_put_aside) {
  osw_glCopyTexImage2D(GL_TEXTURE_2D, 1, GL_RGBA, 10, 20, 4, 2, 0);
  add_first({ask(GL_FRAMEBUFFER_BINDING)});
  add_first({ask(GL_PIXEL_PACK_BUFFER_BINDING)});
  add_first({ask(GL_PIXEL_UNPACK_BUFFER_BINDING)});
  add_first(save(pack_values));
  add_reads(read(10, 4, 0), {});
  add_each({driver::expect<glTexImage2D_op>(GL_TEXTURE_2D, 1, GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr)});
  expect_trace();
}

TEST_F(copy_trace_test, a_copy_of_pixels_that_puts_everything_aside) {
  for (const store_value& one : pack_values) pixel_state::set(rendered, one.name, one.value);
  for (const store_value& one : unpack_values) pixel_state::set(rendered, one.name, one.value);
  pixel_state::set(rendered, GL_PIXEL_PACK_BUFFER_BINDING, 7);
  pixel_state::set(rendered, GL_PIXEL_UNPACK_BUFFER_BINDING, 9);
  osw_glCopyPixels(298, 20, 4, 2, GL_COLOR);
  add_first({ask(GL_FRAMEBUFFER_BINDING)});
  add_each({ask(GL_PIXEL_PACK_BUFFER_BINDING), bind(GL_PIXEL_PACK_BUFFER, 0)});
  add_each({ask(GL_PIXEL_UNPACK_BUFFER_BINDING), bind(GL_PIXEL_UNPACK_BUFFER, 0)});
  add_each(save_and_clear(pack_values));
  add_reads(read(298, 2, 0), read(0, 2, 2));
  add_each(save_and_clear(unpack_values));
  add_each({driver::expect<glDrawPixels_op>(4, 2, GL_RGBA, GL_UNSIGNED_BYTE, nullptr)});
  add_each({bind(GL_PIXEL_PACK_BUFFER, 7)});
  add_each({bind(GL_PIXEL_PACK_BUFFER, 9)});
  add_each(restore(pack_values));
  add_each(restore(unpack_values));
  expect_trace();
}

// Only part 0 is looked at: what part 1 alone has stays as it is there, and reaches nobody.
TEST_F(copy_trace_test, what_part_1_alone_has_is_left_to_it) {
  pixel_state::values& all = pixel_state::all();
  const HGLRC second = rendered.children[1];
  for (const store_value& one : unpack_values) all[{second, one.name}] = one.value;
  all[{second, GL_PIXEL_PACK_BUFFER_BINDING}] = 7;
  all[{second, GL_PIXEL_UNPACK_BUFFER_BINDING}] = 9;
  osw_glCopyPixels(10, 20, 4, 2, GL_COLOR);
  add_first({ask(GL_FRAMEBUFFER_BINDING)});
  add_first({ask(GL_PIXEL_PACK_BUFFER_BINDING)});
  add_first({ask(GL_PIXEL_UNPACK_BUFFER_BINDING)});
  add_first(save(pack_values));
  add_reads(read(10, 4, 0), {});
  add_first(save(unpack_values));
  add_each({driver::expect<glDrawPixels_op>(4, 2, GL_RGBA, GL_UNSIGNED_BYTE, nullptr)});
  expect_trace();
}

// The binding is asked for, and the answer decides nothing: format and shares are the window's.
TEST_F(copy_trace_test, a_bound_framebuffer_changes_no_step) {
  osw_glCopyPixels(298, 20, 4, 2, GL_DEPTH);
  const auto steps = [] {
    return sequential::steps_without_addresses(
        {glGetIntegerv_op::op, glGetBooleanv_op::op, glReadPixels_op::op, glDrawPixels_op::op});
  };
  const std::vector<step> without = steps();
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 5);
  pixel_state::set(rendered, GL_FRAMEBUFFER_BINDING, 5);
  driver::clear_calls();
  osw_glCopyPixels(298, 20, 4, 2, GL_DEPTH);
  EXPECT_EQ(steps(), without);
  const driver::call upload = sequential::calls_in(rendered.children[1]).back();
  EXPECT_EQ(upload.op, glDrawPixels_op::op);
  EXPECT_EQ(upload.arguments[2], GL_DEPTH_COMPONENT);
}

}  // namespace

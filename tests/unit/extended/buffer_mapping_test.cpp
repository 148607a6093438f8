// Mapped buffers: one block of the program's for each, and what becomes of its bytes on the parts.
#include <algorithm>
#include <cstring>
#include <map>

#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using bytes = std::vector<u8>;

constexpr int part_count = 3;
constexpr std::size_t buffer_size = 200;

// A buffer as a driver keeps it, one in each context for each of the targets below.
struct buffer {
  bytes contents;
  bool is_mapped = false;
  void* mapping = nullptr;
};
constexpr GLenum targets[] = {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER};
std::map<std::pair<HGLRC, u64>, buffer> buffers;

// Calls name a buffer by its target, or by its name, which is the target's number as well.
buffer& buffer_of(const driver::live_call& live) {
  return buffers.at({live.what.context, live.what.arguments[0]});
}

void answer(driver::live_call& live, u64 result) {
  live.answered = true;
  live.result = result;
}

template <class Value>
Value* address(const driver::live_call& live, std::size_t argument) {
  return reinterpret_cast<Value*>(live.what.arguments[argument]);
}

void map_at(driver::live_call& live, u64 offset) {
  buffer& one = buffer_of(live);
  if (!one.is_mapped) one.mapping = one.contents.data() + offset;
  answer(live, one.is_mapped ? 0 : driver::bits_of(one.mapping));
  one.is_mapped = true;
}

void unmap(driver::live_call& live) {
  buffer& one = buffer_of(live);
  answer(live, one.is_mapped);
  one.is_mapped = false;
}

template <class Value>
void tell_parameter(driver::live_call& live) {
  const buffer& one = buffer_of(live);
  const bool asks_size = live.what.arguments[1] == GL_BUFFER_SIZE;
  *address<Value>(live, 2) = asks_size ? static_cast<Value>(one.contents.size()) : one.is_mapped;
}

// GL refuses reads and writes of a mapped buffer.
void read_contents(driver::live_call& live) {
  const buffer& one = buffer_of(live);
  if (one.is_mapped) return;
  std::memcpy(address<u8>(live, 3), one.contents.data() + live.what.arguments[1], live.what.arguments[2]);
}

void write_contents(driver::live_call& live) {
  buffer& one = buffer_of(live);
  const u8* data = address<const u8>(live, 3);
  if (one.is_mapped || !data) return;
  std::memcpy(one.contents.data() + live.what.arguments[1], data, live.what.arguments[2]);
}

void tell_binding(driver::live_call& live) {
  if (live.what.arguments[0] == GL_ARRAY_BUFFER_BINDING) *address<GLint>(live, 1) = GL_ARRAY_BUFFER;
  if (live.what.arguments[0] == GL_ELEMENT_ARRAY_BUFFER_BINDING) *address<GLint>(live, 1) = GL_ELEMENT_ARRAY_BUFFER;
}

void act_as_driver() {
  driver::on_call<glMapBuffer_op>([](driver::live_call& live) { map_at(live, 0); });
  driver::on_call<glMapBufferARB_op>([](driver::live_call& live) { map_at(live, 0); });
  driver::on_call<glMapNamedBuffer_op>([](driver::live_call& live) { map_at(live, 0); });
  driver::on_call<glMapBufferRange_op>([](driver::live_call& live) { map_at(live, live.what.arguments[1]); });
  driver::on_call<glMapNamedBufferRange_op>([](driver::live_call& live) { map_at(live, live.what.arguments[1]); });
  driver::on_call<glUnmapBuffer_op>(unmap);
  driver::on_call<glUnmapBufferARB_op>(unmap);
  driver::on_call<glUnmapNamedBuffer_op>(unmap);
  driver::on_call<glGetBufferParameteriv_op>(tell_parameter<GLint>);
  driver::on_call<glGetBufferParameteri64v_op>(tell_parameter<GLint64>);
  driver::on_call<glGetNamedBufferParameteriv_op>(tell_parameter<GLint>);
  driver::on_call<glGetNamedBufferParameteri64v_op>(tell_parameter<GLint64>);
  const auto tell_pointer = [](driver::live_call& live) {
    buffer& one = buffer_of(live);
    *address<void*>(live, 2) = one.is_mapped ? one.mapping : nullptr;
  };
  driver::on_call<glGetBufferPointerv_op>(tell_pointer);
  driver::on_call<glGetNamedBufferPointerv_op>(tell_pointer);
  driver::on_call<glGetBufferSubData_op>(read_contents);
  driver::on_call<glGetNamedBufferSubData_op>(read_contents);
  driver::on_call<glBufferSubData_op>(write_contents);
  driver::on_call<glNamedBufferSubData_op>(write_contents);
  driver::on_call<glGetIntegerv_op>(tell_binding);
}

struct situation {
  library::path way;
  bool on_app_thread;
};

struct buffer_mapping_test : issuing::pipeline_test, testing::WithParamInterface<situation> {
  void SetUp() override {
    const auto [way, on_app_thread] = GetParam();
    library::start({.parts = part_count, .way = way, .query_on_app_thread = on_app_thread, .extended = true});
    rendered = library::start_rendering();
    buffers.clear();
    for (const GLenum target : targets) {
      buffers[{rendered.context, target}].contents.assign(buffer_size, 0xEE);
      for (HGLRC child : rendered.children) buffers[{child, target}].contents.assign(buffer_size, 0x55);
    }
    act_as_driver();
    finish();
    driver::clear_calls();
  }

  void TearDown() override {
    allocation::stop_watching();
    pipeline_test::TearDown();
  }

  static bool is_threaded() { return GetParam().way == library::path::threaded; }
  // Whether the contents of buffers that are mapped again are known without the parts.
  static bool is_known() { return is_threaded() && GetParam().on_app_thread; }
  static void finish() {
    if (is_threaded()) issuing::empty_list();
  }

  void expect_contents(GLenum target, const bytes& expected) const {
    finish();
    for (int part = 0; part < part_count; ++part) EXPECT_EQ(contents(part, target), expected) << "part " << part;
  }
  bytes& contents(int part, GLenum target) const {
    return buffers.at({rendered.children[static_cast<std::size_t>(part)], target}).contents;
  }

  library::rendering rendered;
};

bytes pattern(std::size_t size) {
  bytes made(size);
  for (std::size_t i = 0; i < size; ++i) made[i] = static_cast<u8>(i * 3 + 1);
  return made;
}

// What a buffer of 0x55 holds with `written` at an offset.
bytes with(std::size_t offset, const bytes& written) {
  bytes whole(buffer_size, 0x55);
  std::ranges::copy(written, whole.begin() + static_cast<std::ptrdiff_t>(offset));
  return whole;
}

TEST_P(buffer_mapping_test, what_is_written_reaches_every_part_at_unmap) {
  void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  ASSERT_NE(mapping, nullptr);
  std::memcpy(mapping, pattern(buffer_size).data(), buffer_size);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, pattern(buffer_size));
}

TEST_P(buffer_mapping_test, of_a_range_nothing_else_is_touched) {
  void* mapping = osw_glMapBufferRange(GL_ARRAY_BUFFER, 70, 50, GL_MAP_WRITE_BIT);
  ASSERT_NE(mapping, nullptr);
  std::memcpy(mapping, pattern(50).data(), 50);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, with(70, pattern(50)));
}

TEST_P(buffer_mapping_test, what_is_not_written_stays) {
  auto* mapping = static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, 0, 100, GL_MAP_WRITE_BIT));
  ASSERT_NE(mapping, nullptr);
  mapping[30] = 7;
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  expect_contents(GL_ARRAY_BUFFER, with(30, {7}));
}

TEST_P(buffer_mapping_test, what_is_read_is_the_first_part_s) {
  contents(0, GL_ARRAY_BUFFER) = pattern(buffer_size);
  const void* mapping = osw_glMapBufferRange(GL_ARRAY_BUFFER, 10, 100, GL_MAP_READ_BIT);
  ASSERT_NE(mapping, nullptr);
  EXPECT_EQ(std::memcmp(mapping, pattern(buffer_size).data() + 10, 100), 0);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  finish();
  EXPECT_EQ(contents(1, GL_ARRAY_BUFFER), bytes(buffer_size, 0x55)) << "nothing was written";
  const void* whole = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY);
  EXPECT_EQ(std::memcmp(whole, pattern(buffer_size).data(), buffer_size), 0);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
}

TEST_P(buffer_mapping_test, contents_that_are_given_up_are_not_asked_for) {
  for (const GLbitfield given_up : {GL_MAP_INVALIDATE_RANGE_BIT, GL_MAP_INVALIDATE_BUFFER_BIT}) {
    void* mapping = osw_glMapBufferRange(GL_ARRAY_BUFFER, 8, 8, GL_MAP_WRITE_BIT | given_up);
    ASSERT_NE(mapping, nullptr);
    std::memcpy(mapping, pattern(8).data(), 8);
    osw_glUnmapBuffer(GL_ARRAY_BUFFER);
    expect_contents(GL_ARRAY_BUFFER, with(8, pattern(8)));
  }
  EXPECT_TRUE(driver::calls_of<glGetBufferSubData_op>().empty());
}

// The first part alone is read, and new storage only where that costs no wait.
TEST_P(buffer_mapping_test, new_storage_has_no_contents) {
  const auto reads_after = [](const std::function<void()>& calls) {
    finish();
    driver::clear_calls();
    calls();
    void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
    EXPECT_NE(mapping, nullptr);
    if (mapping) std::memset(mapping, 9, buffer_size);
    EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
    return driver::calls_of<glGetBufferSubData_op>().size();
  };
  // Without the own context's answers the parts have been asked about the buffer since.
  const std::size_t waits = is_threaded() && GetParam().on_app_thread ? 0 : 1;
  const auto define = [](GLenum target, const void* data) { osw_glBufferData(target, 64, data, GL_STREAM_DRAW); };
  const bytes data(64);
  EXPECT_EQ(reads_after([&] { define(GL_ARRAY_BUFFER, nullptr); }), waits);
  expect_contents(GL_ARRAY_BUFFER, bytes(buffer_size, 9));
  EXPECT_EQ(reads_after([&] { define(GL_ARRAY_BUFFER, data.data()); }), 1u);
  EXPECT_EQ(reads_after([&] { define(GL_ELEMENT_ARRAY_BUFFER, nullptr); }), 1u);
  EXPECT_EQ(reads_after([&] {
              define(GL_ARRAY_BUFFER, nullptr);
              osw_glDrawArrays(GL_POINTS, 0, 1);
            }),
            1u);
  EXPECT_EQ(reads_after([] {}), waits) << "known by now";
  osw_wglCreateContext(rendered.window.hdc);
  EXPECT_EQ(reads_after([&] { define(GL_ARRAY_BUFFER, nullptr); }), 1u) << "another context may have written";
}

// How often the parts are asked for contents while `calls` are made.
std::size_t reads_during(const std::function<void()>& calls) {
  driver::clear_calls();
  calls();
  return driver::calls_of<glGetBufferSubData_op>().size();
}

// One that keeps its contents and writes a byte.
void map_and_write(GLintptr offset, u8 value) {
  auto* mapping = static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, offset, 50, GL_MAP_WRITE_BIT));
  ASSERT_NE(mapping, nullptr);
  mapping[1] = value;
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
}

// A ring of pieces, as programs write them that stream.
TEST_P(buffer_mapping_test, what_is_mapped_again_and_again_is_known) {
  bytes expected = pattern(buffer_size);
  for (int part = 0; part < part_count; ++part) contents(part, GL_ARRAY_BUFFER) = expected;
  const auto write = [&](GLintptr offset, u8 value) {
    expected[static_cast<std::size_t>(offset) + 1] = value;
    return reads_during([=] { map_and_write(offset, value); });
  };
  EXPECT_EQ(write(0, 1), 1u);
  EXPECT_EQ(write(50, 2), 1u) << "the whole buffer from now on";
  const std::size_t reads = is_known() ? 0 : 1;
  for (u8 turn = 3; turn < 40; ++turn) EXPECT_EQ(write(turn % 4 * 50, turn), reads);
  expect_contents(GL_ARRAY_BUFFER, expected);
  const auto* mapping = static_cast<const u8*>(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY));
  ASSERT_NE(mapping, nullptr);
  EXPECT_EQ(bytes(mapping, mapping + buffer_size), expected);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
}

TEST_P(buffer_mapping_test, what_is_flushed_and_what_is_given_up_changes_what_is_known) {
  for (u8 turn = 0; turn < 3; ++turn) map_and_write(0, turn);
  auto* mapping =
      static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, 60, 20, GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT));
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 7, 20);
  osw_glFlushMappedBufferRange(GL_ARRAY_BUFFER, 5, 5);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  mapping =
      static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, 90, 9, GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_RANGE_BIT));
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 8, 9);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  bytes expected = with(1, {2});
  std::fill_n(expected.begin() + 65, 5, u8{7});
  std::fill_n(expected.begin() + 90, 9, u8{8});
  if (!is_threaded() || !GetParam().on_app_thread) {
    // The part's own mapping has what was written between the flushed bytes too, as GL leaves it open.
    finish();
    expected = contents(0, GL_ARRAY_BUFFER);
  }
  const std::size_t reads = reads_during([&] {
    const auto* whole = static_cast<const u8*>(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY));
    EXPECT_EQ(bytes(whole, whole + buffer_size), expected);
    osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  });
  EXPECT_EQ(reads, is_known() ? 0u : 1u);
  expect_contents(GL_ARRAY_BUFFER, expected);
}

// Each of them may have changed the buffer, or somebody may have seen to it that it has.
TEST_P(buffer_mapping_test, what_may_have_changed_is_asked_for_again) {
  const GLuint none = 0;
  const u8 byte = 5;
  const std::function<void()> changes[] = {
      [&] { osw_glBufferSubData(GL_ARRAY_BUFFER, 0, 1, &byte); },
      [&] { osw_glBufferSubDataARB(GL_ARRAY_BUFFER, 0, 1, &byte); },
      [&] { osw_glNamedBufferSubData(GL_ARRAY_BUFFER, 0, 1, &byte); },
      [&] { osw_glBufferData(GL_ARRAY_BUFFER, 1, &byte, GL_STREAM_DRAW); },
      [&] { osw_glNamedBufferData(GL_ARRAY_BUFFER, 1, &byte, GL_STREAM_DRAW); },
      [] { osw_glCopyBufferSubData(GL_ELEMENT_ARRAY_BUFFER, GL_ARRAY_BUFFER, 0, 0, 1); },
      [] { osw_glCopyNamedBufferSubData(GL_ELEMENT_ARRAY_BUFFER, GL_ARRAY_BUFFER, 0, 0, 1); },
      [&] { osw_glClearBufferData(GL_ARRAY_BUFFER, GL_R8, GL_RED, GL_UNSIGNED_BYTE, &byte); },
      [&] { osw_glClearBufferSubData(GL_ARRAY_BUFFER, GL_R8, 0, 1, GL_RED, GL_UNSIGNED_BYTE, &byte); },
      [&] { osw_glClearNamedBufferData(GL_ARRAY_BUFFER, GL_R8, GL_RED, GL_UNSIGNED_BYTE, &byte); },
      [&] { osw_glClearNamedBufferSubData(GL_ARRAY_BUFFER, GL_R8, 0, 1, GL_RED, GL_UNSIGNED_BYTE, &byte); },
      [] { osw_glInvalidateBufferData(GL_ARRAY_BUFFER); },
      [] { osw_glInvalidateBufferSubData(GL_ARRAY_BUFFER, 0, 1); },
      [] { osw_glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT); },
      [] { osw_glMemoryBarrierByRegion(GL_SHADER_STORAGE_BARRIER_BIT); },
      [] { osw_glBeginTransformFeedback(GL_POINTS); },
      [] { osw_glEndTransformFeedback(); },
      [] { osw_glBeginTransformFeedbackEXT(GL_POINTS); },
      [] { osw_glEndTransformFeedbackEXT(); },
      [&] { osw_glDeleteBuffers(1, &none); },
      [&] { osw_glDeleteBuffersARB(1, &none); },
      [] { osw_glPopClientAttrib(); },
      [] {
        osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 9);
        osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
      },
      [this] { osw_wglDeleteContext(osw_wglCreateContext(rendered.window.hdc)); },
  };
  for (u8 turn = 0; turn < 3; ++turn) map_and_write(0, turn);
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    SCOPED_TRACE(i);
    map_and_write(0, 1);
    changes[i]();
    finish();
    contents(0, GL_ARRAY_BUFFER).assign(buffer_size, static_cast<u8>(i + 100));
    EXPECT_EQ(reads_during([] { map_and_write(60, 1); }), 1u);
    finish();
    EXPECT_EQ(contents(1, GL_ARRAY_BUFFER)[70], i + 100);
  }
}

TEST_P(buffer_mapping_test, what_changes_another_buffer_is_no_reason_to_ask) {
  const u8 byte = 5;
  for (u8 turn = 0; turn < 3; ++turn) map_and_write(0, turn);
  const std::size_t reads = reads_during([&] {
    osw_glBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, 1, &byte);
    osw_glNamedBufferSubData(GL_ELEMENT_ARRAY_BUFFER, 0, 1, &byte);
    osw_glBindBuffer(GL_ARRAY_BUFFER, 0);
    osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 9);
    osw_glDrawArrays(GL_POINTS, 0, 1);
    map_and_write(60, 1);
  });
  EXPECT_EQ(reads, is_known() ? 0u : 1u);
}

TEST_P(buffer_mapping_test, while_a_pack_buffer_is_bound_or_another_context_is_there_it_is_asked) {
  for (u8 turn = 0; turn < 3; ++turn) map_and_write(0, turn);
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 9);
  for (int turn = 0; turn < 3; ++turn) EXPECT_EQ(reads_during([] { map_and_write(0, 1); }), 1u);
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  osw_wglCreateContext(rendered.window.hdc);
  for (int turn = 0; turn < 3; ++turn) EXPECT_EQ(reads_during([] { map_and_write(0, 1); }), 1u);
}

TEST_P(buffer_mapping_test, any_number_is_mapped_at_a_time) {
  void* first = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  void* second = osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_READ_WRITE);
  ASSERT_TRUE(first && second);
  std::memset(second, 2, buffer_size);
  std::memset(first, 1, buffer_size);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, bytes(buffer_size, 1));
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, bytes(buffer_size, 2));
}

TEST_P(buffer_mapping_test, of_what_is_flushed_by_hand_nothing_is_lost_and_nothing_else_is_sent) {
  constexpr GLbitfield access = GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT | GL_MAP_INVALIDATE_RANGE_BIT;
  auto* mapping = static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, 100, 100, access));
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 0x55, 100);
  std::memcpy(mapping + 10, pattern(20).data(), 20);
  osw_glFlushMappedBufferRange(GL_ARRAY_BUFFER, 10, 20);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, with(110, pattern(20)));
  if (!is_threaded() || !GetParam().on_app_thread) return;
  std::vector<u64> sizes;
  for (const driver::call& call : driver::calls_of<glBufferSubData_op>()) sizes.push_back(call.arguments[2]);
  EXPECT_EQ(sizes, (std::vector<u64>(part_count, 20)));
}

TEST_P(buffer_mapping_test, a_flush_beyond_the_mapping_is_left_to_gl) {
  constexpr GLbitfield access = GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT | GL_MAP_INVALIDATE_RANGE_BIT;
  auto* mapping = static_cast<u8*>(osw_glMapBufferRange(GL_ARRAY_BUFFER, 100, 50, access));
  std::memset(mapping, 0x55, 50);
  const std::pair<GLintptr, GLsizeiptr> wrong[] = {{-1, 5}, {0, 51}, {50, 1}, {0, -1}, {INT64_MAX, 1}, {1, INT64_MAX}};
  for (const auto& [offset, length] : wrong) osw_glFlushMappedBufferRange(GL_ARRAY_BUFFER, offset, length);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  expect_contents(GL_ARRAY_BUFFER, bytes(buffer_size, 0x55));
  osw_glFlushMappedBufferRange(GL_ARRAY_BUFFER, 0, 1);
  EXPECT_GE(driver::calls_of<glFlushMappedBufferRange_op>().size(), std::size(wrong) + 1);
}

TEST_P(buffer_mapping_test, the_program_s_pointer_is_told) {
  void* told = &rendered;
  osw_glGetBufferPointerv(GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &told);
  EXPECT_EQ(told, nullptr);
  void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  osw_glGetBufferPointerv(GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &told);
  EXPECT_EQ(told, mapping);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  osw_glGetBufferPointerv(GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &told);
  EXPECT_EQ(told, nullptr);
}

TEST_P(buffer_mapping_test, bytes_lie_as_gl_promises) {
  for (const GLintptr offset : {0, 1, 63, 64, 65}) {
    void* mapping = osw_glMapBufferRange(GL_ARRAY_BUFFER, offset, 10, GL_MAP_WRITE_BIT);
    EXPECT_EQ((driver::bits_of(mapping) - static_cast<u64>(offset)) % 64, 0u) << offset;
    osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  }
}

TEST_P(buffer_mapping_test, what_gl_refuses_gives_null_and_reaches_no_part) {
  ASSERT_NE(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
  EXPECT_EQ(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr) << "mapped already";
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_FALSE) << "unmapped already";
  EXPECT_EQ(library::reports(), std::vector<std::string>());
}

TEST_P(buffer_mapping_test, aliases_and_names_do_the_same) {
  void* mapping = osw_glMapBufferARB(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 1, buffer_size);
  EXPECT_EQ(osw_glUnmapBufferARB(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, bytes(buffer_size, 1));

  mapping = osw_glMapNamedBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 2, buffer_size);
  void* told = nullptr;
  osw_glGetNamedBufferPointerv(GL_ELEMENT_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &told);
  EXPECT_EQ(told, mapping);
  EXPECT_EQ(osw_glUnmapNamedBuffer(GL_ELEMENT_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, bytes(buffer_size, 2));

  constexpr GLbitfield access = GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT;
  mapping = osw_glMapNamedBufferRange(GL_ELEMENT_ARRAY_BUFFER, 0, 10, access);
  ASSERT_NE(mapping, nullptr);
  std::memset(mapping, 3, 10);
  osw_glFlushMappedNamedBufferRange(GL_ELEMENT_ARRAY_BUFFER, 0, 10);
  osw_glUnmapNamedBuffer(GL_ELEMENT_ARRAY_BUFFER);
  bytes expected(buffer_size, 2);
  std::fill_n(expected.begin(), 10, u8{3});
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, expected);
}

// The block goes when the mapping has ended, in whatever way.
TEST_P(buffer_mapping_test, no_block_stays) {
  const GLuint name = GL_ARRAY_BUFFER;
  const std::function<void()> ends[] = {
      [] { osw_glUnmapBuffer(GL_ARRAY_BUFFER); },
      [&] { osw_glDeleteBuffers(1, &name); },
      [] { osw_glBufferData(GL_ARRAY_BUFFER, buffer_size, nullptr, GL_STATIC_DRAW); },
      [] { osw_glNamedBufferData(GL_ARRAY_BUFFER, buffer_size, nullptr, GL_STATIC_DRAW); },
  };
  for (const std::function<void()>& end : ends) {
    finish();
    allocation::watch();
    ASSERT_NE(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
    end();
    finish();
    EXPECT_EQ(allocation::live_blocks(), 0);
    allocation::stop_watching();
    for (auto& [place, one] : buffers) one.is_mapped = false;
  }
}

TEST_P(buffer_mapping_test, a_mapping_that_ended_unseen_gives_way) {
  allocation::watch();
  const void* first = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  for (auto& [place, one] : buffers) one.is_mapped = false;
  const void* second = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  EXPECT_NE(first, second);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  // Nor do contents stay that were known.
  osw_glInvalidateBufferData(GL_ARRAY_BUFFER);
  finish();
  EXPECT_EQ(allocation::live_blocks(), 0);
}

TEST_P(buffer_mapping_test, without_memory_there_is_no_mapping) {
  for (const int failing : {1, 2}) {
    allocation::fail_call(failing);
    EXPECT_EQ(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
    allocation::stop_failing();
    for (const auto& [place, one] : buffers) EXPECT_FALSE(one.is_mapped);
  }
  EXPECT_EQ(library::reports(),
            std::vector<std::string>(2, "OGLSPANWrapper Error: no memory for the buffer of glMapBuffer\n"));
}

TEST_P(buffer_mapping_test, contents_are_read_from_the_first_part) {
  contents(0, GL_ARRAY_BUFFER) = pattern(buffer_size);
  bytes read(20);
  osw_glGetBufferSubData(GL_ARRAY_BUFFER, 30, 20, read.data());
  if (!is_threaded()) return;
  EXPECT_EQ(std::memcmp(read.data(), pattern(buffer_size).data() + 30, read.size()), 0);
}

std::string name_of(const testing::TestParamInfo<situation>& tested) {
  if (tested.param.way == library::path::sequential) return "sequential";
  return tested.param.on_app_thread ? "threaded" : "threaded_without_own";
}
INSTANTIATE_TEST_SUITE_P(paths, buffer_mapping_test,
                         testing::Values(situation{library::path::threaded, true},
                                         situation{library::path::threaded, false},
                                         situation{library::path::sequential, true}),
                         name_of);

}  // namespace

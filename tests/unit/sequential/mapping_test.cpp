// Buffer mapping on the sequential path: one block for the application, a mapping for each part.
#include <algorithm>
#include <cstring>
#include <functional>
#include <map>

#include "dispatch/thread_state.h"
#include "support/allocation.h"
#include "support/sequential_steps.h"

namespace {

// The buffers of the parts' contexts, one per target, as a driver would keep them.
struct buffer {
  std::vector<u8> contents;
  bool mapped = false;
};
std::map<std::pair<HGLRC, GLenum>, buffer> buffers;

buffer& buffer_of(HGLRC context, u64 target) {
  return buffers[{context, static_cast<GLenum>(target)}];
}

void map_buffer(driver::live_call& live) {
  buffer& one = buffer_of(live.what.context, live.what.arguments[0]);
  live.result = one.mapped ? 0 : driver::bits_of(one.contents.data());
  one.mapped = true;
}

void unmap_buffer(driver::live_call& live) {
  buffer& one = buffer_of(live.what.context, live.what.arguments[0]);
  live.result = one.mapped;
  one.mapped = false;
}

void answer_parameter(driver::live_call& live) {
  const buffer& one = buffer_of(live.what.context, live.what.arguments[0]);
  const bool size = live.what.arguments[1] == GL_BUFFER_SIZE;
  *reinterpret_cast<GLint*>(live.what.arguments[2]) = size ? static_cast<GLint>(one.contents.size()) : one.mapped;
}

void answer_pointer(driver::live_call& live) {
  buffer& one = buffer_of(live.what.context, live.what.arguments[0]);
  *reinterpret_cast<void**>(live.what.arguments[2]) = one.mapped ? one.contents.data() : nullptr;
}

struct sequential_mapping_test : library::process_test {
  void start(int parts) {
    rendered = sequential::start({.parts = parts});
    driver::on_call<glMapBuffer_op>(map_buffer);
    driver::on_call<glMapBufferARB_op>(map_buffer);
    driver::on_call<glMapBufferRange_op>(map_buffer);
    driver::on_call<glUnmapBuffer_op>(unmap_buffer);
    driver::on_call<glUnmapBufferARB_op>(unmap_buffer);
    driver::on_call<glGetBufferParameteriv_op>(answer_parameter);
    driver::on_call<glGetBufferPointerv_op>(answer_pointer);
  }
  void make_buffers(GLenum target, std::size_t size) {
    for (HGLRC child : rendered.children) buffer_of(child, target).contents.assign(size, 0x55);
  }
  void expect_contents(GLenum target, const std::vector<u8>& expected) {
    for (HGLRC child : rendered.children) EXPECT_EQ(buffer_of(child, target).contents, expected);
  }
  library::rendering rendered;
};

void expect_unmapped_state() {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  EXPECT_EQ(state->map_staging, nullptr);
  EXPECT_EQ(state->map_size, 0u);
  for (const void* pointer : state->map_part_pointers) EXPECT_EQ(pointer, nullptr);
}

std::vector<u8> pattern(std::size_t size) {
  std::vector<u8> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<u8>(i * 3 + 1);
  return bytes;
}

TEST_F(sequential_mapping_test, what_is_written_reaches_every_part_at_unmap) {
  start(4);
  make_buffers(GL_ARRAY_BUFFER, 100);
  void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  ASSERT_NE(mapping, nullptr);
  const std::vector<u8> written = pattern(100);
  std::memcpy(mapping, written.data(), written.size());
  expect_contents(GL_ARRAY_BUFFER, std::vector<u8>(100, 0x55));
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, written);
  expect_unmapped_state();
}

TEST_F(sequential_mapping_test, the_application_reads_zeros_and_an_unmap_writes_them) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 40);
  const void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_READ_ONLY);
  const std::vector<u8> zeros(40);
  EXPECT_EQ(std::memcmp(mapping, zeros.data(), zeros.size()), 0);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  expect_contents(GL_ARRAY_BUFFER, zeros);
}

TEST_F(sequential_mapping_test, a_range_stages_its_own_length) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 40);
  void* mapping = osw_glMapBufferRange(GL_ARRAY_BUFFER, 0, 10, GL_MAP_WRITE_BIT);
  ASSERT_NE(mapping, nullptr);
  EXPECT_EQ(__osw_fetch_thread_state()->map_size, 10u);
  std::memset(mapping, 0x11, 10);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  std::vector<u8> expected(40, 0x55);
  std::fill_n(expected.begin(), 10, 0x11);
  expect_contents(GL_ARRAY_BUFFER, expected);
}

TEST_F(sequential_mapping_test, an_alias_maps_by_its_own_entry_and_asks_by_the_core_ones) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 8);
  driver::clear_calls();
  osw_glMapBufferARB(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  const auto ask = [&](GLenum name) {
    return sequential::on_first_part(rendered,
                                     {driver::expect<glGetBufferParameteriv_op>(GL_ARRAY_BUFFER, name, nullptr)});
  };
  std::vector<sequential::step> expected = ask(GL_BUFFER_SIZE);
  sequential::append(&expected, ask(GL_BUFFER_MAPPED));
  for (HGLRC child : rendered.children) {
    expected.push_back(sequential::switch_to(child));
    expected.push_back({child, driver::expect<glMapBufferARB_op>(GL_ARRAY_BUFFER, GL_WRITE_ONLY)});
  }
  sequential::append(&expected,
                     sequential::on_each_part(rendered, {driver::expect<glGetBufferPointerv_op>(
                                                            GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, nullptr)}));
  expected.push_back(sequential::switch_to(rendered.context));
  EXPECT_EQ(sequential::steps_without_addresses({glGetBufferParameteriv_op::op, glGetBufferPointerv_op::op}), expected);
  EXPECT_EQ(__osw_fetch_thread_state()->seq_override, nullptr);
  EXPECT_EQ(osw_glUnmapBufferARB(GL_ARRAY_BUFFER), GL_TRUE);
  for (HGLRC child : rendered.children) {
    EXPECT_EQ(sequential::calls_in(child).back(), driver::expect<glUnmapBufferARB_op>(GL_ARRAY_BUFFER));
  }
}

TEST_F(sequential_mapping_test, a_buffer_that_is_mapped_gives_null_and_keeps_the_block) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  void* first = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  EXPECT_EQ(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), nullptr);
  EXPECT_EQ(osw_glMapBufferRange(GL_ARRAY_BUFFER, 0, 4, GL_MAP_WRITE_BIT), nullptr);
  EXPECT_EQ(__osw_fetch_thread_state()->map_staging, first);
  EXPECT_EQ(__osw_fetch_thread_state()->map_size, 16u);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
}

TEST_F(sequential_mapping_test, unmapping_what_is_not_mapped_asks_the_parts_alone) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  driver::clear_calls();
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_FALSE);
  expect_contents(GL_ARRAY_BUFFER, std::vector<u8>(16, 0x55));
  for (HGLRC child : rendered.children) {
    EXPECT_EQ(sequential::calls_in(child).back(), driver::expect<glUnmapBuffer_op>(GL_ARRAY_BUFFER));
  }
}

std::uintptr_t address_of(const void* block) {
  return reinterpret_cast<std::uintptr_t>(block);
}

TEST_F(sequential_mapping_test, a_second_target_takes_the_place_of_the_first) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  make_buffers(GL_ELEMENT_ARRAY_BUFFER, 24);
  osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  EXPECT_TRUE(library::reports().empty());
  void* second = osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
  EXPECT_EQ(library::reports().size(), 1u);
  EXPECT_EQ(__osw_fetch_thread_state()->map_staging, second);
  EXPECT_EQ(__osw_fetch_thread_state()->map_size, 24u);
  std::memset(second, 0x22, 24);
  osw_glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER);
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, std::vector<u8>(24, 0x22));
  // The first one's block is lost: its unmap copies nothing.
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  expect_contents(GL_ARRAY_BUFFER, std::vector<u8>(16, 0x55));
}

// One block is staged, whichever buffer is unmapped first: the second's goes with the first's unmap. The application
// has it all the same, and writes to it until it unmaps the second.
TEST_F(sequential_mapping_test, an_unmap_of_the_first_target_copies_the_block_of_the_second) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  make_buffers(GL_ELEMENT_ARRAY_BUFFER, 24);
  allocation::watch();
  void* first = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  std::memset(first, 0x11, 16);
  void* second = osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
  std::memset(second, 0x22, 24);
  EXPECT_TRUE(allocation::is_live(address_of(first)));
  EXPECT_EQ(osw_glUnmapBuffer(GL_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ARRAY_BUFFER, std::vector<u8>(16, 0x55));
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, std::vector<u8>(24, 0x22));
  expect_unmapped_state();
  EXPECT_TRUE(allocation::is_live(address_of(second)));
  std::memset(second, 0x33, 24);
  for (HGLRC child : rendered.children) std::ranges::fill(buffer_of(child, GL_ELEMENT_ARRAY_BUFFER).contents, 0x77);
  EXPECT_EQ(osw_glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER), GL_TRUE);
  expect_contents(GL_ELEMENT_ARRAY_BUFFER, std::vector<u8>(24, 0x77));
  EXPECT_EQ(allocation::live_blocks(), 0);
  allocation::stop_watching();
}

TEST_F(sequential_mapping_test, two_buffers_mapped_in_each_frame_leave_no_blocks) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  make_buffers(GL_ELEMENT_ARRAY_BUFFER, 24);
  allocation::watch();
  for (int frame = 0; frame < 100; ++frame) {
    osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
    osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
    osw_glUnmapBuffer(frame % 2 ? GL_ARRAY_BUFFER : GL_ELEMENT_ARRAY_BUFFER);
    osw_glUnmapBuffer(frame % 2 ? GL_ELEMENT_ARRAY_BUFFER : GL_ARRAY_BUFFER);
    EXPECT_EQ(allocation::live_blocks(), 0);
  }
  allocation::stop_watching();
  EXPECT_EQ(library::reports().size(), 1u) << "one for all frames";
}

// A deletion unmaps the buffer without a word of it.
TEST_F(sequential_mapping_test, after_a_mapped_buffer_was_deleted_no_blocks_gather) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  make_buffers(GL_ELEMENT_ARRAY_BUFFER, 24);
  allocation::watch();
  osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  for (HGLRC child : rendered.children) buffer_of(child, GL_ARRAY_BUFFER).mapped = false;
  int most = 0;  // blocks
  for (int frame = 0; frame < 100; ++frame) {
    std::memset(osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY), 0x22, 24);
    EXPECT_EQ(osw_glUnmapBuffer(GL_ELEMENT_ARRAY_BUFFER), GL_TRUE);
    most = std::max(most, allocation::live_blocks());
  }
  EXPECT_LE(most, 4) << "two buffers, each with a block and the record of it";
  allocation::stop_watching();
}

TEST_F(sequential_mapping_test, what_is_still_mapped_goes_with_the_thread) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  make_buffers(GL_ELEMENT_ARRAY_BUFFER, 24);
  ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  const int others = platform::live_threads();
  const auto blocks_after = [&](const std::function<void()>& work) {
    library::run_on_new_thread([&] {
      ASSERT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
      work();
      ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    });
    EXPECT_TRUE(platform::wait_for_live_threads(others)) << "its workers, of which the last frees the queue";
    return allocation::live_blocks();
  };
  allocation::watch();
  const int without = blocks_after([] {});
  EXPECT_EQ(blocks_after([] {
              osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
              osw_glMapBuffer(GL_ELEMENT_ARRAY_BUFFER, GL_WRITE_ONLY);
              EXPECT_NE(__osw_fetch_thread_state()->staged_blocks, nullptr);
            }),
            without);
  allocation::stop_watching();
}

TEST_F(sequential_mapping_test, an_empty_buffer_gives_an_empty_block_and_copies_nothing) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 0);
  const std::function<void*()> maps[] = {[] { return osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY); },
                                         [] { return osw_glMapBufferRange(GL_ARRAY_BUFFER, 0, 0, GL_MAP_WRITE_BIT); }};
  for (const auto& map : maps) {
    allocation::watch();
    void* const mapping = map();
    EXPECT_NE(mapping, nullptr) << "as a mapping that failed";
    EXPECT_TRUE(allocation::is_live(reinterpret_cast<std::uintptr_t>(mapping)));
    EXPECT_EQ(__osw_fetch_thread_state()->map_staging, mapping);
    EXPECT_EQ(__osw_fetch_thread_state()->map_size, 0u);
    osw_glUnmapBuffer(GL_ARRAY_BUFFER);
    EXPECT_FALSE(allocation::is_live(reinterpret_cast<std::uintptr_t>(mapping)));
    allocation::stop_watching();
    expect_unmapped_state();
  }
}

TEST_F(sequential_mapping_test, a_part_whose_mapping_failed_is_passed_over) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  driver::on_call<glGetBufferPointerv_op>([&](driver::live_call& live) {
    answer_pointer(live);
    if (live.what.context == rendered.children[0]) *reinterpret_cast<void**>(live.what.arguments[2]) = nullptr;
  });
  void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  std::memset(mapping, 0x33, 16);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  EXPECT_EQ(buffer_of(rendered.children[0], GL_ARRAY_BUFFER).contents, std::vector<u8>(16, 0x55));
  EXPECT_EQ(buffer_of(rendered.children[1], GL_ARRAY_BUFFER).contents, std::vector<u8>(16, 0x33));
}

TEST_F(sequential_mapping_test, without_memory_the_parts_are_unmapped_again) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  allocation::fail_call(1, true);
  const void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  allocation::stop_failing();
  EXPECT_EQ(mapping, nullptr);
  for (HGLRC child : rendered.children) EXPECT_FALSE(buffer_of(child, GL_ARRAY_BUFFER).mapped);
  expect_contents(GL_ARRAY_BUFFER, std::vector<u8>(16, 0x55));
  expect_unmapped_state();
  EXPECT_EQ(library::reports().size(), 1u);
}

TEST_F(sequential_mapping_test, the_block_is_freed_at_unmap) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  allocation::watch();
  void* mapping = osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  const auto block = reinterpret_cast<std::uintptr_t>(mapping);
  EXPECT_TRUE(allocation::is_live(block));
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  EXPECT_FALSE(allocation::is_live(block));
  allocation::stop_watching();
}

TEST_F(sequential_mapping_test, the_pointer_query_gives_a_parts_own_mapping) {
  start(2);
  make_buffers(GL_ARRAY_BUFFER, 16);
  osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
  void* pointer = nullptr;
  osw_glGetBufferPointerv(GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &pointer);
  EXPECT_EQ(pointer, buffer_of(rendered.children[1], GL_ARRAY_BUFFER).contents.data());
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
}

}  // namespace

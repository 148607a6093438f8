// Draws on the threaded path: what lies in buffers is a command that nobody waits for, and what lies in memory has been
// copied when the call returns.
#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "support/allocation.h"
#include "support/waiting_calls.h"
#include "wgl/records/glrc.h"

namespace {

using namespace waiting;

struct draws_test : two_parts_test {};

template <class Values>
std::vector<u8> bytes_of(const Values& values) {
  const auto* first = reinterpret_cast<const u8*>(std::data(values));
  return {first, first + std::size(values) * sizeof values[0]};
}

void expect_memory(const std::vector<u8>& bytes) {
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].memory, bytes);
  });
}

// What the parts find behind both arguments of a call.
received::reader two_arrays(u32 first, u32 second, std::size_t bytes) {
  return [=](const driver::call& now, const received::calls&) {
    std::vector<u8> found = received::memory_at(now.arguments[first], bytes);
    const std::vector<u8> more = received::memory_at(now.arguments[second], bytes);
    found.insert(found.end(), more.begin(), more.end());
    return found;
  };
}

TEST_F(draws_test, several_draws_take_their_counts_with_them) {
  for (const GLsizei draws : {1, 3, 28, 29, 1000}) {
    std::vector<GLint> firsts(static_cast<std::size_t>(draws), 4);
    std::vector<GLsizei> counts(static_cast<std::size_t>(draws), 6);
    std::vector<u8> wanted = bytes_of(firsts);
    const std::vector<u8> more = bytes_of(counts);
    wanted.insert(wanted.end(), more.begin(), more.end());
    received::forget_readers();
    received::read(glMultiDrawArrays_op::op, two_arrays(1, 2, firsts.size() * sizeof(GLint)));
    EXPECT_FALSE(waits([&] { osw_glMultiDrawArrays(GL_LINES, firsts.data(), counts.data(), draws); }));
    std::ranges::fill(firsts, -1);
    std::ranges::fill(counts, -1);
    expect_memory(wanted);
  }
}

TEST_F(draws_test, counts_that_gl_refuses_reach_it) {
  const GLint some = 1;
  osw_glMultiDrawArrays(GL_LINES, &some, &some, -1);
  osw_glMultiDrawArrays(GL_LINES, nullptr, nullptr, 0);
  received::for_each_part([](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[0].what.arguments[3], 0xFFFFFFFFu);
  });
}

TEST_F(draws_test, without_memory_for_its_counts_a_draw_is_dropped_on_all_parts) {
  const std::vector<GLint> figures(1000, 1);
  for (const int failing : {1, 2}) {
    begin();
    allocation::fail_call(failing);
    osw_glMultiDrawArrays(GL_LINES, figures.data(), figures.data(), 1000);
    allocation::stop_failing();
    received::expect_parts({});
  }
  EXPECT_EQ(library::reports().size(), 2u);
}

// The indices of each draw, which the parts find behind the addresses that they were given.
received::reader indices_of_draws(std::size_t draws, std::size_t bytes) {
  return [=](const driver::call& now, const received::calls&) {
    std::vector<u64> addresses(draws);
    const std::vector<u8> given = received::memory_at(now.arguments[3], draws * sizeof(u64));
    std::memcpy(addresses.data(), given.data(), given.size());
    std::vector<u8> found;
    for (const u64 address : addresses) {
      const std::vector<u8> indices = received::memory_at(address, bytes);
      found.insert(found.end(), indices.begin(), indices.end());
    }
    return found;
  };
}

TEST_F(draws_test, indices_of_several_draws_are_taken_from_memory) {
  std::vector<GLushort> first = {1, 2, 3};
  std::vector<GLushort> second = {4, 5, 6};
  const void* indices[] = {first.data(), second.data()};
  const GLsizei counts[] = {3, 3};
  const GLint bases[] = {7, 8};
  const std::vector<GLushort> wanted = {1, 2, 3, 4, 5, 6};
  for (const bool with_base : {true, false}) {
    first = {1, 2, 3};
    second = {4, 5, 6};
    indices[0] = first.data();
    received::forget_readers();
    const int op = with_base ? int{glMultiDrawElementsBaseVertex_op::op} : int{glMultiDrawElements_op::op};
    received::read(op, indices_of_draws(2, 6));
    EXPECT_FALSE(waits([&] {
      if (with_base) return osw_glMultiDrawElementsBaseVertex(GL_LINES, counts, GL_UNSIGNED_SHORT, indices, 2, bases);
      osw_glMultiDrawElements(GL_LINES, counts, GL_UNSIGNED_SHORT, indices, 2);
    }));
    std::ranges::fill(first, GLushort{9});
    std::ranges::fill(second, GLushort{9});
    indices[0] = nullptr;
    expect_memory(bytes_of(wanted));
  }
}

TEST_F(draws_test, offsets_of_several_draws_are_copied) {
  const void* indices[] = {offset(12), offset(40)};
  const std::vector<u8> wanted = bytes_of(indices);
  const GLsizei counts[] = {3, 3};
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5);
  begin();
  received::read(glMultiDrawElements_op::op, received::bytes_at(3, sizeof indices));
  osw_glMultiDrawElements(GL_LINES, counts, GL_UNSIGNED_SHORT, indices, 2);
  indices[0] = indices[1] = nullptr;
  expect_memory(wanted);
}

TEST_F(draws_test, instances_of_elements_in_memory_have_their_own_copy) {
  std::vector<GLuint> elements = {3, 1, 2};
  const std::vector<u8> wanted = bytes_of(elements);
  received::read(glDrawElementsInstancedBaseVertex_op::op, received::bytes_at(3, wanted.size()));
  EXPECT_FALSE(
      waits([&] { osw_glDrawElementsInstancedBaseVertex(GL_TRIANGLES, 3, GL_UNSIGNED_INT, elements.data(), 5, 100); }));
  std::ranges::fill(elements, 0u);
  expect_memory(wanted);
}

// The last call of an op that a part has received before its draw.
const received::call* last_of(const received::calls& logged, int op) {
  const auto found = std::ranges::find_if(logged, [=](const received::call& one) { return one.what.op == op; });
  return found == logged.end() ? nullptr : &*found;
}

TEST_F(draws_test, indices_are_counted_on_from_the_base_vertex) {
  std::vector<GLubyte> memory(3 * 8);
  for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<u8>(i);
  const std::vector<u8> wanted(memory.begin() + 8, memory.end());
  const GLubyte elements[] = {11, 12};
  osw_glVertexPointer(2, GL_FLOAT, 0, memory.data());
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  received::read(glDrawElementsBaseVertex_op::op, [](const driver::call& now, const received::calls& before) {
    const received::call* pointer = last_of(before, glVertexPointer_op::op);
    const bool on_app = now.context == __osw_glrc_registry[0].app_hglrc;
    return on_app || !pointer ? std::vector<u8>() : received::memory_at(pointer->what.arguments[3] + 8, 16);
  });
  EXPECT_FALSE(waits([&] { osw_glDrawElementsBaseVertex(GL_LINES, 2, GL_UNSIGNED_BYTE, elements, -10); }));
  std::ranges::fill(memory, 0xEE);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 3u);
    EXPECT_EQ(logged[1].memory, wanted);
  });
}

TEST_F(draws_test, a_draw_of_arrays_in_memory_that_has_its_range_in_a_buffer_is_waited_for) {
  GLfloat memory[6] = {};
  const GLint first = 0;
  const GLsizei count = 2;
  osw_glVertexPointer(3, GL_FLOAT, 0, memory);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  EXPECT_FALSE(waits([] { osw_glDrawArraysInstanced(GL_POINTS, 0, 2, 3); }));
  EXPECT_TRUE(waits([&] { osw_glMultiDrawArrays(GL_POINTS, &first, &count, 1); }));
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 5);
  EXPECT_TRUE(waits([] { osw_glDrawElements(GL_POINTS, 2, GL_UNSIGNED_INT, nullptr); }));
  osw_glBindBuffer(GL_DRAW_INDIRECT_BUFFER, 6);
  EXPECT_TRUE(waits([] { osw_glDrawArraysIndirect(GL_POINTS, nullptr); }));
}

// An array that is but a part of each vertex ends before the vertex does.
TEST_F(draws_test, of_the_last_vertex_no_byte_more_is_read_than_the_array_has) {
  constexpr std::size_t page = 4096;
  void* pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* end = static_cast<u8*>(pages) + page;
  ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
  osw_glColorPointer(GL_BGRA, GL_UNSIGNED_BYTE, 32, end - 36);
  osw_glEnableClientState(GL_COLOR_ARRAY);
  EXPECT_FALSE(waits([] { osw_glDrawArrays(GL_POINTS, 0, 2); }));
  osw_glColorPointer(4, GL_UNSIGNED_INT_2_10_10_10_REV, 0, end - 8);
  EXPECT_FALSE(waits([] { osw_glDrawArrays(GL_POINTS, 0, 2); }));
  received::wait_for_parts();
  munmap(pages, 2 * page);
}

// ---- figures in a buffer ----

// What the application's context has received, but for what the library asks it.
std::vector<driver::call> calls_but_questions() {
  std::vector<driver::call> found = received::without_memory(received::of_app());
  std::erase_if(found, [](const driver::call& one) { return one.op == glGetIntegerv_op::op; });
  return found;
}

TEST_F(draws_test, a_draw_by_figures_in_a_buffer_is_a_command_and_draws_nothing_on_the_application_s_context) {
  osw_glBindBuffer(GL_DRAW_INDIRECT_BUFFER, 6);
  begin();
  osw_glDrawArraysIndirect(GL_POINTS, offset(16));
  osw_glMultiDrawElementsIndirect(GL_POINTS, GL_UNSIGNED_INT, offset(32), 7, 20);
  osw_glDispatchComputeIndirect(48);
  EXPECT_EQ(*own_queue()->fill_count, 3u);
  received::expect_parts({driver::expect<glDrawArraysIndirect_op>(GL_POINTS, offset(16)),
                          driver::expect<glMultiDrawElementsIndirect_op>(GL_POINTS, GL_UNSIGNED_INT, offset(32), 7, 20),
                          driver::expect<glDispatchComputeIndirect_op>(GLintptr{48})});
  EXPECT_EQ(calls_but_questions(),
            (std::vector{driver::expect<glMultiDrawArraysIndirect_op>(GL_POINTS, offset(16), 0, 0),
                         driver::expect<glMultiDrawElementsIndirect_op>(GL_POINTS, GL_UNSIGNED_INT, offset(32), 0, 20),
                         driver::expect<glDispatchCompute_op>(0u, 0u, 0u)}));
}

// A list takes no such dispatch: the application's context makes the error of it, and no part hears of it.
TEST_F(draws_test, a_dispatch_by_figures_in_a_buffer_is_refused_within_a_display_list) {
  begin();
  driver::on_call<glGetIntegerv_op>([](driver::live_call& call) {
    if (call.what.arguments[0] == GL_LIST_INDEX) *reinterpret_cast<GLint*>(call.what.arguments[1]) = 3;
  });
  osw_glDispatchComputeIndirect(48);
  EXPECT_EQ(*own_queue()->fill_count, 0u);
  received::expect_parts({});
  EXPECT_EQ(calls_but_questions(), std::vector{driver::expect<glDispatchComputeIndirect_op>(GLintptr{48})});
}

TEST_F(draws_test, figures_in_memory_are_copied) {
  std::vector<GLuint> figures = {1, 2, 3, 4, 0, 0, 5, 6, 7, 8};
  const std::vector<u8> wanted = bytes_of(figures);
  received::read(glMultiDrawArraysIndirect_op::op, [](const driver::call& now, const received::calls&) {
    return now.arguments[2] ? received::memory_at(now.arguments[1], 40) : std::vector<u8>();
  });
  osw_glMultiDrawArraysIndirect(GL_POINTS, figures.data(), 2, 24);
  std::ranges::fill(figures, 0u);
  expect_memory(wanted);
}

// ---- glArrayElement ----

void expect_element_calls(const std::vector<int>& ops) {
  received::for_each_part([&](const received::calls& logged) {
    std::vector<int> found;
    for (const received::call& one : logged) found.push_back(one.what.op);
    EXPECT_EQ(found, ops);
  });
}

TEST_F(draws_test, an_element_s_vertex_comes_last) {
  const GLfloat positions[6] = {};
  const GLubyte colors[6] = {};
  const GLint numbers[2] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, positions);
  osw_glColorPointer(3, GL_UNSIGNED_BYTE, 0, colors);
  osw_glVertexAttribIPointer(2, 1, GL_INT, 0, numbers);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_COLOR_ARRAY);
  osw_glEnableVertexAttribArray(2);
  EXPECT_FALSE(waits([] { osw_glArrayElement(1); }));
  expect_element_calls({glColor3ubv_op::op, glVertexAttribI1iv_op::op, glVertex3fv_op::op});
  osw_glVertexAttribPointer(0, 3, GL_FLOAT, 0, 0, positions);
  osw_glEnableVertexAttribArray(0);
  EXPECT_FALSE(waits([] { osw_glArrayElementEXT(1); }));
  expect_element_calls({glColor3ubv_op::op, glVertexAttribI1iv_op::op, glVertexAttrib3fv_op::op});
}

TEST_F(draws_test, an_element_that_no_call_sends_is_waited_for) {
  const GLfloat positions[6] = {};
  const GLushort colors[6] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, positions);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glColorPointer(3, GL_HALF_FLOAT, 0, colors);
  osw_glEnableClientState(GL_COLOR_ARRAY);
  EXPECT_TRUE(waits([] { osw_glArrayElement(1); }));
  expect_element_calls({glArrayElement_op::op});
  osw_glBindBuffer(GL_ARRAY_BUFFER, 4);
  osw_glColorPointer(3, GL_FLOAT, 0, nullptr);
  EXPECT_TRUE(waits([] { osw_glArrayElement(1); }));
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  EXPECT_FALSE(waits([] { osw_glArrayElement(1); }));
}

}  // namespace

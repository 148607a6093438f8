// Between pages that nobody may touch: a captured draw reads its vertices and indices, and no byte before or behind.
#include <sys/mman.h>

#include <cstring>

#include "support/received.h"

namespace {

constexpr std::size_t page = 4096;

// A page between two that are closed. Blocks lie at its very beginning or its very end.
struct guarded_page {
  u8* bytes;
  guarded_page() {
    void* pages = mmap(nullptr, 3 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    bytes = static_cast<u8*>(pages) + page;
    EXPECT_EQ(mprotect(bytes, page, PROT_READ | PROT_WRITE), 0);
    for (std::size_t i = 0; i < page; ++i) bytes[i] = static_cast<u8>(i * 11 + i / 256);
  }
  ~guarded_page() { munmap(bytes - page, 3 * page); }
  u8* block(std::size_t size, bool at_end) const { return at_end ? bytes + page - size : bytes; }
};

struct guarded_memory_test : library::process_test, testing::WithParamInterface<bool> {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
    osw_glEnableClientState(GL_VERTEX_ARRAY);
  }
  u8* vertex_block(std::size_t size) { return vertices.block(size, GetParam()); }
  guarded_page vertices;
  guarded_page more;
  guarded_page indices;
};

const void* back_from(const u8* block, std::size_t bytes) {
  return reinterpret_cast<const void*>(reinterpret_cast<u64>(block) - bytes);
}

void expect_draws(int op, std::size_t count) {
  received::for_each_part([&](const received::calls& logged) {
    std::size_t draws = 0;
    for (const received::call& one : logged) draws += one.what.op == op;
    EXPECT_EQ(draws, count);
  });
}

TEST_P(guarded_memory_test, packed_and_strided_vertices_from_any_first_one) {
  struct {
    GLsizei stride;
    std::size_t apart;
  } const strides[] = {{0, 8}, {8, 8}, {20, 20}};
  for (const auto& one : strides) {
    for (const GLint first : {0, 1, 7}) {
      osw_glVertexPointer(2, GL_FLOAT, one.stride, back_from(vertex_block(one.apart * 5), one.apart * first));
      osw_glDrawArrays(GL_POINTS, first, 5);
    }
  }
  expect_draws(glDrawArrays_op::op, 9);
}

TEST_P(guarded_memory_test, interleaved_arrays_and_arrays_of_their_own) {
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  osw_glEnableClientState(GL_COLOR_ARRAY);
  const u8* block = vertex_block(24 * 4);
  osw_glVertexPointer(3, GL_FLOAT, 24, block);
  osw_glNormalPointer(GL_FLOAT, 24, block + 12);
  osw_glColorPointer(4, GL_UNSIGNED_BYTE, 0, more.block(4 * 4, GetParam()));
  osw_glDrawArrays(GL_QUADS, 0, 4);
  osw_glVertexPointer(3, GL_FLOAT, 24, block + 12);
  osw_glNormalPointer(GL_FLOAT, 24, block);
  osw_glDrawArrays(GL_QUADS, 0, 4);
  expect_draws(glDrawArrays_op::op, 2);
}

template <class Index>
const void* place_indices(const guarded_page& where, bool at_end) {
  constexpr Index drawn[] = {9, 5, 8, 5, 6};
  u8* block = where.block(sizeof drawn, at_end);
  std::memcpy(block, drawn, sizeof drawn);
  return block;
}

TEST_P(guarded_memory_test, elements_of_each_type_with_and_without_a_range) {
  osw_glVertexPointer(3, GL_SHORT, 0, back_from(vertex_block(6 * 5), 6 * 5));  // vertices 5 to 9
  struct {
    GLenum type;
    const void* (*place)(const guarded_page& where, bool at_end);
  } const types[] = {{GL_UNSIGNED_BYTE, place_indices<GLubyte>},
                     {GL_UNSIGNED_SHORT, place_indices<GLushort>},
                     {GL_UNSIGNED_INT, place_indices<GLuint>}};
  for (const auto& one : types) {
    const void* block = one.place(indices, GetParam());
    osw_glDrawElements(GL_LINES, 5, one.type, block);
    osw_glDrawRangeElements(GL_LINES, 0, 1000, 5, one.type, block);
  }
  expect_draws(glDrawElements_op::op, 3);
  expect_draws(glDrawRangeElements_op::op, 3);
}

// The last row ends with its last pixel, however long the rows are.
TEST_P(guarded_memory_test, a_piece_of_a_wider_image) {
  constexpr std::size_t bytes = 2 * 32 + 16;
  const u8* block = vertices.block(bytes, GetParam());
  received::read(glTexSubImage2D_op::op, received::bytes_at(8, bytes));
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 8);
  osw_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 4, 3, GL_RGBA, GL_UNSIGNED_BYTE, block);
  received::wait_for_parts();
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.back().what.op, glTexSubImage2D_op::op);
    EXPECT_EQ(logged.back().memory, std::vector<u8>(block, block + bytes));
  });
}

// These are waited for and read nothing on the issuing thread, not even where a draw would.
TEST_P(guarded_memory_test, draws_without_a_capture_read_nothing_here) {
  const GLint firsts[] = {0, 5};
  const GLsizei counts[] = {3, 4};
  osw_glVertexPointer(2, GL_FLOAT, 0, vertices.bytes + page);
  osw_glMultiDrawArrays(GL_POINTS, firsts, counts, 2);
  osw_glDrawArraysInstanced(GL_POINTS, 0, 4, 2);
  osw_glDrawElementsInstanced(GL_POINTS, 4, GL_UNSIGNED_INT, indices.bytes + page, 2);
  expect_draws(glMultiDrawArrays_op::op, 1);
  expect_draws(glDrawArraysInstanced_op::op, 1);
  expect_draws(glDrawElementsInstanced_op::op, 1);
}

// A sub-rectangle whose last row ends where the application's image does.
TEST_P(guarded_memory_test, a_part_of_an_image_ends_with_its_last_pixel) {
  constexpr int image_width = 16;
  constexpr int image_height = 16;
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, image_width);
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 4);
  osw_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 4);
  osw_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, image_width - 4, image_height - 4, GL_RGBA, GL_UNSIGNED_BYTE,
                      vertex_block(image_width * image_height * 4));
  expect_draws(glTexSubImage2D_op::op, 1);
}

// The copy takes the whole image, and what the skips lead to beyond it only as far as it is there.
TEST_P(guarded_memory_test, memory_may_end_with_the_image_whatever_is_skipped) {
  constexpr std::size_t bytes = 8 * 8 * 4;
  u8* const image = vertex_block(bytes);
  std::vector<u8> expected(bytes + 5 * 32 + 3 * 4);
  std::memcpy(expected.data(), image, bytes);
  if (!GetParam()) std::memcpy(expected.data(), image, expected.size());
  osw_glPixelStorei(GL_UNPACK_SKIP_ROWS, 5);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 8);
  osw_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 3);
  received::read(glTexImage2D_op::op, [&](const driver::call& now, const received::calls&) {
    // The application's own context has the application's memory.
    const bool own = now.arguments[8] == reinterpret_cast<u64>(image);
    return own ? std::vector<u8>() : received::memory_at(now.arguments[8], expected.size());
  });
  received::wait_for_parts();
  received::clear();
  osw_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, image);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].memory, expected);
  });
}

INSTANTIATE_TEST_SUITE_P(blocks, guarded_memory_test, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "at_the_end" : "at_the_beginning"; });

}  // namespace

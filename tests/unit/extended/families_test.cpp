// The forms in which the wide ops copy what the basic ones have no word for: arrays that stand anywhere and may be
// null, strings, and values by pnames that the basic tables do not know.
#include <algorithm>
#include <numeric>

#include "support/allocation.h"
#include "support/received.h"

namespace {

struct wide_families_test : library::process_test {
  void SetUp() override {
    library::start({.parts = 4, .extended = true});
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

// Each part has received one call, with these bytes behind an argument.
template <class Values>
void expect_copied(u32 argument, const void* given, const Values& values) {
  const auto* first = reinterpret_cast<const u8*>(std::data(values));
  const std::vector<u8> bytes(first, first + std::size(values) * sizeof values[0]);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_NE(logged[0].what.arguments[argument], driver::bits_of(given));
    EXPECT_EQ(logged[0].memory, bytes);
  });
}

TEST_F(wide_families_test, a_short_array_before_other_parameters_is_copied) {
  GLenum attachments[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
  const std::vector<GLenum> wanted(std::begin(attachments), std::end(attachments));
  received::read(glInvalidateSubFramebuffer_op::op, received::bytes_at(2, sizeof attachments));
  osw_glInvalidateSubFramebuffer(GL_FRAMEBUFFER, 2, attachments, 1, 2, 3, 4);
  attachments[0] = attachments[1] = 0;
  expect_copied(2, attachments, wanted);
}

TEST_F(wide_families_test, a_long_array_goes_into_a_block_that_the_last_worker_frees) {
  std::vector<GLuint> textures(1000);
  std::iota(textures.begin(), textures.end(), 7);
  const std::vector<GLuint> wanted = textures;
  received::read(glBindTextures_op::op, received::bytes_at(2, wanted.size() * sizeof(GLuint)));
  allocation::watch();
  osw_glBindTextures(3, 1000, textures.data());
  std::ranges::fill(textures, 0);
  expect_copied(2, textures.data(), wanted);
  const std::vector<std::uintptr_t> freed = allocation::freed();
  allocation::stop_watching();
  EXPECT_EQ(std::ranges::count(freed, received::of_part(0).at(0).what.arguments[2]), 1);
}

TEST_F(wide_families_test, a_null_array_stays_null) {
  osw_glBindBuffersBase(GL_UNIFORM_BUFFER, 0, 5, nullptr);
  received::expect_parts({driver::expect<glBindBuffersBase_op>(GL_UNIFORM_BUFFER, 0u, 5, nullptr)});
  received::expect_app({driver::expect<glBindBuffersBase_op>(GL_UNIFORM_BUFFER, 0u, 5, nullptr)});
}

TEST_F(wide_families_test, an_array_that_no_memory_can_hold_reaches_no_part) {
  const GLuint one = 1;
  osw_glDeleteSamplers(0x7FFFFFFF, &one);
  received::expect_parts({});
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: no memory for the data of glDeleteSamplers\n"});
}

TEST_F(wide_families_test, without_memory_the_call_is_dropped_on_all_parts_alike) {
  const std::vector<GLuint> samplers(1000, 3);
  allocation::fail_call(1);
  osw_glDeleteSamplers(1000, samplers.data());
  allocation::stop_failing();
  received::expect_parts({});
  received::expect_app({driver::expect<glDeleteSamplers_op>(1000, samplers.data())});
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: no memory for the data of glDeleteSamplers\n"});
}

TEST_F(wide_families_test, a_negative_count_is_left_to_gl) {
  const GLuint one = 1;
  osw_glDeleteSamplers(-1, &one);
  received::for_each_part([](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].what.arguments[0], 0xFFFFFFFFu);
  });
}

TEST_F(wide_families_test, strings_of_every_length_are_copied_to_their_end) {
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{3}, std::size_t{223}, std::size_t{224}, std::size_t{9999}}) {
    received::clear();
    received::forget_readers();
    std::string name(length, 'n');
    const std::string wanted = name;
    received::read(glBindFragDataLocationIndexed_op::op, received::bytes_at(3, length + 1));
    osw_glBindFragDataLocationIndexed(1, 2, 3, name.c_str());
    std::ranges::fill(name, 'x');
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].memory, std::vector<u8>(wanted.c_str(), wanted.c_str() + length + 1)) << length;
    });
  }
}

template <class Call>
void expect_values(int op, u32 argument, std::size_t count, Call call) {
  received::clear();
  received::forget_readers();
  std::vector<GLint> values(count);
  std::iota(values.begin(), values.end(), 5);
  const std::vector<GLint> wanted = values;
  received::read(op, received::bytes_at(argument, count * sizeof(GLint)));
  call(values.data());
  std::ranges::fill(values, 0);
  expect_copied(argument, values.data(), wanted);
}

TEST_F(wide_families_test, a_sampler_and_a_texture_take_as_many_values_as_the_pname_says) {
  for (const auto& [pname, count] :
       {std::pair(GLenum{GL_TEXTURE_BORDER_COLOR}, 4), std::pair(GLenum{GL_TEXTURE_SWIZZLE_RGBA}, 4),
        std::pair(GLenum{GL_TEXTURE_WRAP_S}, 1), std::pair(GLenum{GL_TEXTURE_SWIZZLE_R}, 1)}) {
    const GLenum name = pname;
    expect_values(glSamplerParameteriv_op::op, 2, static_cast<std::size_t>(count),
                  [name](const GLint* values) { osw_glSamplerParameteriv(1, name, values); });
    expect_values(glTextureParameterIiv_op::op, 2, static_cast<std::size_t>(count),
                  [name](const GLint* values) { osw_glTextureParameterIiv(1, name, values); });
  }
}

TEST_F(wide_families_test, clearing_a_colour_takes_four_values_and_a_stencil_one) {
  expect_values(glClearNamedFramebufferiv_op::op, 3, 4,
                [](const GLint* values) { osw_glClearNamedFramebufferiv(1, GL_COLOR, 0, values); });
  expect_values(glClearNamedFramebufferiv_op::op, 3, 1,
                [](const GLint* values) { osw_glClearNamedFramebufferiv(1, GL_STENCIL, 0, values); });
}

TEST_F(wide_families_test, a_patch_has_four_outer_and_two_inner_levels) {
  for (const auto& [pname, count] : {std::pair(GLenum{GL_PATCH_DEFAULT_OUTER_LEVEL}, std::size_t{4}),
                                     std::pair(GLenum{GL_PATCH_DEFAULT_INNER_LEVEL}, std::size_t{2})}) {
    received::clear();
    received::forget_readers();
    const std::vector<GLfloat> values = {1.5f, 2.5f, 3.5f, 4.5f};
    received::read(glPatchParameterfv_op::op, received::bytes_at(1, count * sizeof(GLfloat)));
    osw_glPatchParameterfv(pname, values.data());
    expect_copied(1, values.data(), std::vector<GLfloat>(values.begin(), values.begin() + static_cast<long>(count)));
  }
}

// Into a pack buffer each part reads its own.
TEST_F(wide_families_test, a_texture_is_read_from_the_first_part_and_into_a_buffer_on_all) {
  std::vector<GLubyte> texels(64);
  const auto read = [&] {
    osw_glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    osw_glGetTextureSubImage(5, 0, 0, 0, 0, 4, 4, 1, GL_RGBA, GL_UNSIGNED_BYTE, 64, texels.data());
  };
  const std::vector<driver::call> reads = {
      driver::expect<glGetTexImage_op>(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data()),
      driver::expect<glGetTextureSubImage_op>(5u, 0, 0, 0, 0, 4, 4, 1, GL_RGBA, GL_UNSIGNED_BYTE, 64, texels.data())};
  read();
  EXPECT_EQ(received::without_memory(received::of_part(0)), reads);
  for (int part = 1; part < received::parts(); ++part) EXPECT_TRUE(received::of_part(part).empty());
  received::expect_app(reads);
  osw_glBindBuffer(GL_PIXEL_PACK_BUFFER, 3);
  received::wait_for_parts();
  received::clear();
  read();
  received::expect_parts(reads);
}

}  // namespace

#include "gl_model.h"

#include <algorithm>
#include <cstring>

#include "argument_memory.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

// The pixel store state is followed by the code that follows it for the basic mode, which is GL's there.
bool change_store(gl_model* model, int op, arguments_of a) {
  if (op != glPixelStorei_op::op && op != glPixelStoref_op::op) return false;
  gl_context* plain = &model->plain;
  plain->pack = model->pack;
  plain->unpack = model->unpack;
  receive(plain, op, a);
  model->pack = plain->pack;
  model->unpack = plain->unpack;
  for (pixel_store* store : {&model->pack, &model->unpack}) {
    store->swap_bytes = store->swap_bytes != 0;
    store->lsb_first = store->lsb_first != 0;
  }
  return true;
}

bool change_transfer(gl_model* model, int op, arguments_of a) {
  if (op != glPixelTransferi_op::op && op != glPixelTransferf_op::op) return false;
  const auto bits = static_cast<u32>(a[1]);
  float value = static_cast<float>(static_cast<i32>(bits));
  if (op == glPixelTransferf_op::op) std::memcpy(&value, &bits, sizeof value);
  const float plain = plain_transfer(name(a[0]));
  if (value == plain) {
    model->transfers.erase(name(a[0]));
  } else if (plain >= 0) {
    model->transfers[name(a[0])] = value;
  }
  return true;
}

void bind_framebuffer(gl_model* model, GLenum target, GLuint framebuffer) {
  if (target == GL_FRAMEBUFFER || target == GL_DRAW_FRAMEBUFFER) model->draw_framebuffer = framebuffer;
  if (target == GL_FRAMEBUFFER || target == GL_READ_FRAMEBUFFER) model->read_framebuffer = framebuffer;
}

void delete_framebuffers(gl_model* model, i32 count, u64 names) {
  const auto* list = reinterpret_cast<const GLuint*>(names);
  for (i32 i = 0; list && i < count; ++i) {
    if (model->draw_framebuffer == list[i]) model->draw_framebuffer = 0;
    if (model->read_framebuffer == list[i]) model->read_framebuffer = 0;
  }
}

// Calls that go on being calls, too.
void change_besides(gl_model* model, int op, arguments_of a) {
  if (op == glBindFramebuffer_op::op) bind_framebuffer(model, name(a[0]), name(a[1]));
  if (op == glDeleteFramebuffers_op::op) delete_framebuffers(model, static_cast<i32>(a[0]), a[1]);
  if (is_query_call(op)) change_queries(model, op, a);
}

u64 digest_of_store(u64 digest, const pixel_store& store) {
  for (const i32 value : {store.swap_bytes, store.lsb_first, store.row_length, store.skip_rows, store.skip_pixels,
                          store.alignment, store.image_height, store.skip_images}) {
    digest = mixed(digest, static_cast<u32>(value));
  }
  return digest;
}

GLuint name_of_buffer(const buffer_pointer& buffer) {
  return buffer ? buffer->name : 0;
}

// ---- names ----

void add_objects(gl_model* model, int op, GLuint made) {
  if (op == glGenVertexArrays_op::op || op == glCreateVertexArrays_op::op) {
    model->vaos[made] = std::make_shared<vertex_array_object>();
    model->vaos[made]->name = made;
  }
  if (op == glCreateBuffers_op::op) {
    model->buffers[made] = std::make_shared<buffer_object>();
    model->buffers[made]->name = made;
  }
}

u32 count_of_names(const ops::row& row, arguments_of a) {
  if (row.result_size) return 1;
  const auto count = static_cast<i32>(a[row.count - 2]);
  return count > 0 && a[row.count - 1] ? static_cast<u32>(count) : 0;
}

effect make_names(gl_model* model, const ops::row& row, arguments_of a, effect made) {
  const u32 count = count_of_names(row, a);
  made.memory = mixed(made.memory, u64{model->next_name} << 32 | count);
  for (u32 i = 0; i < count; ++i) add_objects(model, row.op, model->next_name++);
  return made;
}

// ---- memory ----

// Texts one behind the other, each with its end.
u64 digest_of_texts(u64 count, u64 texts) {
  u64 digest = driver::empty_digest;
  const auto* const* list = reinterpret_cast<const char* const*>(texts);
  for (u64 i = 0; list && i < count; ++i) {
    digest = list[i] ? mixed_bytes(digest, list[i], std::strlen(list[i]) + 1) : mixed(digest, 0);
  }
  return digest;
}

bool takes_texts(int op) {
  return op == glCreateShaderProgramv_op::op || op == glTransformFeedbackVaryings_op::op ||
         op == glTransformFeedbackVaryingsEXT_op::op;
}

// Where a pointer is an offset it is a value like any other, and null is told from what is not.
u64 digest_of_pointers(const gl_model& model, const ops::row& row, const call_shape& shape, arguments_of a) {
  const bool has_offset = shape.unpacks && model.bound[unpack_target];
  u64 digest = driver::empty_digest;
  for (u32 i = 0; i < row.count; ++i) {
    if (row.parameters[i].is_pointer) digest = mixed(digest, has_offset ? a[i] : a[i] != 0);
  }
  return digest;
}

u64 digest_of_values(const ops::row& row, arguments_of a) {
  u64 digest = driver::empty_digest;
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) digest = mixed(digest, a[i]);
  }
  return digest;
}

effect reach_any(gl_model* model, const ops::row& row, arguments_of a) {
  const call_shape& shape = shape_of(row.op);
  effect reached{.op = row.op};
  gl_context* plain = &model->plain;
  plain->unpack = model->unpack;
  plain->unpack_buffer = name_of_buffer(model->bound[unpack_target]);
  reached.memory = driver::empty_digest;
  if (takes_texts(row.op)) {
    reached.values = digest_of_values(row, a);
    reached.memory = digest_of_texts(static_cast<i32>(a[1]) > 0 ? a[1] : 0, a[2]);
  } else if (row.op == glShaderSource_op::op) {
    // However many strings it comes in, the text is one.
    reached.values = a[0];
    reached.memory = receive(plain, row.op, a).memory;
  } else if (digest_of_arguments(row, a, &reached.memory)) {
    reached.values = digest_of_values(row, a);
  } else {
    const event seen = receive(plain, row.op, a);
    reached.values = seen.values;
    reached.memory = seen.memory;
  }
  const bool has_text = takes_texts(row.op) || row.op == glShaderSource_op::op;
  if (row.threaded != ops::family::create && !has_text) {
    reached.values = mixed(reached.values, digest_of_pointers(*model, row, shape, a));
  }
  // What an image is read by has gone into its bytes, but for what then changes its values.
  reached.state = shape.unpacks ? model->transfer_digest : model->state_digest;
  return reached;
}

effect reach_draw(gl_model* model, const ops::row& row, arguments_of a) {
  effect drawn{.op = row.op, .values = digest_of_values(row, a), .memory = fetch(*model, row.op, a)};
  drawn.state = model->state_digest;
  const bool is_element = row.op == glArrayElement_op::op || row.op == glArrayElementEXT_op::op;
  if (is_element && static_cast<i32>(a[0]) >= 0 && model->expects) {
    drawn.instead = immediate_calls(*model, static_cast<i32>(a[0]));
  }
  return drawn;
}

}  // namespace

gl_model fresh_model(int number, bool has_contents, bool expects) {
  gl_model made;
  made.number = number;
  made.has_contents = has_contents;
  made.expects = expects;
  made.plain.expects = true;
  made.vao = made.vaos[0] = std::make_shared<vertex_array_object>();
  note_state(&made);
  return made;
}

u64 mixed(u64 digest, u64 value) {
  digest = (digest ^ value) * 0x100000001B3;
  return digest ^ digest >> 29;
}

u64 mixed_bytes(u64 digest, const void* memory, u64 count) {
  const auto* bytes = static_cast<const u8*>(memory);
  digest = mixed(digest, count);
  for (; count >= 8; count -= 8, bytes += 8) {
    u64 word;
    std::memcpy(&word, bytes, 8);
    digest = mixed(digest, word);
  }
  u64 rest = 0;
  if (count) std::memcpy(&rest, bytes, count);
  return mixed(digest, rest);
}

int function_of(int op) {
  const ops::row& row = ops::of(op);
  return row.base >= 0 && ops::of(row.base).count == row.count ? row.base : op;
}

bool change_state(gl_model* model, int op, arguments_of a) {
  return change_store(model, op, a) || change_transfer(model, op, a) || change_buffers(model, op, a) ||
         change_arrays(model, op, a);
}

float plain_transfer(GLenum name) {
  switch (name) {
    case GL_RED_SCALE:
    case GL_GREEN_SCALE:
    case GL_BLUE_SCALE:
    case GL_ALPHA_SCALE:
    case GL_DEPTH_SCALE:
      return 1;
    case GL_MAP_COLOR:
    case GL_MAP_STENCIL:
    case GL_INDEX_SHIFT:
    case GL_INDEX_OFFSET:
    case GL_RED_BIAS:
    case GL_GREEN_BIAS:
    case GL_BLUE_BIAS:
    case GL_ALPHA_BIAS:
    case GL_DEPTH_BIAS:
      return 0;
    default:
      return -1;
  }
}

void note_state(gl_model* model) {
  model->transfer_digest = driver::empty_digest;
  for (const auto& [name, value] : model->transfers) {
    model->transfer_digest = mixed(mixed(model->transfer_digest, name), driver::bits_of(value));
  }
  u64 digest = digest_of_store(digest_of_store(driver::empty_digest, model->pack), model->unpack);
  for (const buffer_pointer& bound : model->bound) digest = mixed(digest, name_of_buffer(bound));
  digest = mixed(digest, name_of_buffer(model->vao->elements));
  digest = mixed(digest, u64{model->draw_framebuffer} << 32 | model->read_framebuffer);
  digest = mixed(digest, u64{model->vao->name} << 32 | model->client_texture);
  model->state_digest = mixed(digest, model->transfer_digest);
}

bool makes_names(int op) {
  return ops::of(function_of(op)).threaded == ops::family::create || op == glCreateShaderProgramv_op::op;
}

bool is_question(int op) {
  static constexpr int questions[] = {glGetIntegerv_op::op,
                                      glGetBooleanv_op::op,
                                      glGetDoublev_op::op,
                                      glGetFloatv_op::op,
                                      glGetInteger64v_op::op,
                                      glGetBufferParameteriv_op::op,
                                      glGetBufferParameteri64v_op::op,
                                      glGetNamedBufferParameteriv_op::op,
                                      glGetNamedBufferParameteri64v_op::op,
                                      glGetBufferPointerv_op::op,
                                      glGetNamedBufferPointerv_op::op,
                                      glGetBufferSubData_op::op,
                                      glGetNamedBufferSubData_op::op,
                                      glGetTexLevelParameteriv_op::op,
                                      glGetSynciv_op::op,
                                      glGetString_op::op,
                                      glGetStringi_op::op,
                                      glGetGraphicsResetStatus_op::op,
                                      glIsEnabled_op::op,
                                      glIsQuery_op::op,
                                      glIsShader_op::op,
                                      glGetQueryObjectiv_op::op,
                                      glGetQueryObjectuiv_op::op,
                                      glGetQueryObjecti64v_op::op,
                                      glGetQueryObjectui64v_op::op,
                                      glGetQueryObjectivARB_op::op,
                                      glGetQueryObjectuivARB_op::op,
                                      glGetQueryObjectuivEXT_op::op,
                                      glGetQueryObjecti64vEXT_op::op,
                                      glGetQueryObjectui64vEXT_op::op,
                                      glMapBuffer_op::op,
                                      glMapBufferRange_op::op,
                                      glMapNamedBuffer_op::op,
                                      glMapNamedBufferRange_op::op,
                                      glReadPixels_op::op};
  static const std::vector<bool> asks = [] {
    std::vector<bool> flags(gl_all_count);
    for (const int one : questions) flags[static_cast<std::size_t>(one)] = true;
    return flags;
  }();
  return asks[static_cast<std::size_t>(op)];
}

effect reach(gl_model* model, int op, arguments_of a) {
  const ops::row& row = ops::of(function_of(op));
  if (change_state(model, row.op, a)) return note_state(model), effect{};
  if (is_question(row.op)) return {};
  if (is_fence_call(row.op)) return reach_fence(model, row.op, a);
  if (is_draw(row.op)) return reach_draw(model, row, a);
  change_besides(model, row.op, a);
  note_state(model);
  const effect reached = reach_any(model, row, a);
  return makes_names(row.op) ? make_names(model, row, a, reached) : reached;
}

}  // namespace fuzz

#include "wgl/records/pixel_store.h"

namespace {

bool is_refused(GLenum pname, i32 value) {
  if (pname == GL_PACK_ALIGNMENT || pname == GL_UNPACK_ALIGNMENT) {
    return value != 1 && value != 2 && value != 4 && value != 8;
  }
  return value < 0;
}

}  // namespace

void set_pixel_store(__osw_pixel_store* pack, __osw_pixel_store* unpack, GLenum pname, i32 value) {
  for (const pixel_store_field& field : pixel_store_fields) {
    const bool of_pack = pname == field.pack;
    if (!of_pack && pname != field.unpack) continue;
    if (field.number && is_refused(pname, value)) return;
    set_field(of_pack ? pack : unpack, field, value);
  }
}

i32 pixel_store_value(GLfloat value) {
  constexpr GLfloat limit = 2147483648.0f;
  if (!(value > -limit && value < limit)) return value > 0 ? 0x7FFFFFFF : -1;
  return static_cast<i32>(value);
}

void push_pixel_store(pixel_store_stack* stack, const __osw_pixel_store& store, GLbitfield mask) {
  if (stack->depth == max_client_attribs) return;
  stack->is_saved[stack->depth] = (mask & GL_CLIENT_PIXEL_STORE_BIT) != 0;
  stack->saved[stack->depth] = store;
  ++stack->depth;
}

void pop_pixel_store(pixel_store_stack* stack, __osw_pixel_store* store) {
  if (!stack->depth) return;
  --stack->depth;
  if (stack->is_saved[stack->depth]) *store = stack->saved[stack->depth];
}

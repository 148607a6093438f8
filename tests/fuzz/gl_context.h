// A context as a driver sees it: the state that decides what memory a call reads, and of every call what it was and
// what its pointers led to. The same code stands for the driver's contexts, which calls reach through the library, and
// for those of the expectation, which the application's calls reach directly.
//
// Where the library's record of a context's state is told to differ from GL's own, this driver follows the record:
// - glEnableClientState, glDisableClientState, glEnableVertexAttribArray, glDisableVertexAttribArray: an unknown array
//   stands for the vertex array;
// - glTexCoordPointer: unit 8 has the fog coordinates' entry;
// - glBindFramebuffer and glBindBuffer: either binds whatever of the five tracked targets it names;
// - glInterleavedArrays, and the EXT names of the pointer calls change nothing;
// - glPushClientAttrib, glPopClientAttrib: nothing on the threaded path, the pixel state alone on the other.
#pragma once

#include "pixel_bytes.h"
#include "support/call_shapes.h"

namespace fuzz {

using ops::call_shape;
using ops::reads;
using ops::shape_of;

struct client_array {
  bool is_set = false;
  bool buffered = false;
  GLenum name = 0;  // of the array; for an attribute its number
  i32 size = 0;
  GLenum type = 0;
  u8 normalized = 0;
  i32 stride = 0;
  u64 pointer = 0;
};

constexpr u32 array_count = 32;
constexpr u32 first_attribute = 16;
constexpr u32 fog_array = 11;

// What glPushClientAttrib has put aside, as deep as GL lets it.
struct saved_attribs {
  bool pixels;
  pixel_store pack, unpack;
};
constexpr std::size_t attrib_depth = 16;

struct gl_context {
  int part = -1;               // -1 for the application's own
  bool expects = false;        // of the expectation: it writes nothing into the application's memory
  u8* pixel_shadow = nullptr;  // where a read of pixels goes instead, when `expects`
  pixel_store pack;
  pixel_store unpack;
  GLuint array_buffer = 0;
  GLuint element_buffer = 0;
  GLuint pack_buffer = 0;
  GLuint unpack_buffer = 0;
  GLuint framebuffer = 0;
  u32 client_texture = 0;
  u32 enabled = 0;  // bit i: array i
  client_array arrays[array_count];
  GLuint mapped = 0;  // bit i: the buffer of map_targets[i] is mapped
  bool keeps_attribs = false;
  std::vector<saved_attribs> attribs;
};

// What a context has seen of a call. Memory and values as digests; pointers apart, because most of them may change.
struct event {
  int op = 0;
  u64 values = 0;
  u64 pointers = 0;
  u64 memory = 0;
  u64 head = 0;              // up to 8 bytes from the first pointer on that was read
  bool has_pointer = false;  // one that is not null
};

// Addresses below are offsets into buffers and lead nowhere.
constexpr u64 lowest_address = 0x10000;

// The call reaches the context.
event receive(gl_context* context, int op, const driver::argument_bits& arguments);

// What every context answers to a call with these values.
u64 answer_of(const event& seen);

// What a driver writes to where a query's result goes.
u8 written_by(const event& seen);

// Whether the driver writes something else than `written_by` says.
bool writes_figures(int op);

// The number of an array; -1 for one that is unknown.
int array_number(const gl_context& context, GLenum name);

// Bytes of a component; 0 for a type that is none.
u32 component_bytes(GLenum type);

// Bytes of the name of a display list; 0 for a type that is none.
u32 list_bytes(GLenum type);

// From one vertex to the next.
u32 bytes_apart(const client_array& array);

// Whether a draw reads from the array: not from a buffer, and with figures that GL takes.
bool is_readable(const client_array& array);

// The index that lies in a bound element buffer at an offset: below 16.
u32 index_in_buffer(u64 offset);

// The format of a texture's first level.
GLenum internal_format_of(GLenum target);

// The image that an image call names.
image image_of(const call_shape& shape, const ops::row& row, const driver::argument_bits& arguments);

}  // namespace fuzz

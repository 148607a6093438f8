// A context of the extended mode as GL has it: what decides which bytes a call reads, and what they are. The same code
// stands for each of the driver's contexts, which calls reach through the library, and for those of the expectation,
// which the application's calls reach directly. Unlike gl_context.h it follows GL's rules and nothing that a library
// keeps.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "gl_context.h"

namespace fuzz {

struct buffer_object {
  GLuint name = 0;
  std::vector<u8> bytes;
  bool is_mapped = false;
  u64 map_offset = 0;
  u64 map_length = 0;
  GLbitfield map_access = 0;
};
using buffer_pointer = std::shared_ptr<buffer_object>;

enum class value_kind : u8 { floats, integers, doubles };

struct array_format {
  i32 size = 4;
  GLenum type = GL_FLOAT;
  u8 normalized = 0;
  value_kind kind = value_kind::floats;
};

struct attribute {
  bool enabled = false;
  array_format format;
  u32 relative = 0;
  u32 binding = 0;
};

// Where attributes take their values from; without a buffer `offset` is an address.
struct vertex_binding {
  buffer_pointer buffer;
  u64 offset = 0;
  i32 stride = 16;
  u32 divisor = 0;
};

struct fixed_array {
  bool enabled = false;
  array_format format;
  i32 stride = 0;
  u64 pointer = 0;
  buffer_pointer buffer;
};

constexpr u32 attributes = 16;
constexpr u32 fixed_arrays = 15;  // numbered as in gl_context.h
constexpr u32 texture_units = 8;

struct vertex_array_object {
  GLuint name = 0;
  buffer_pointer elements;
  attribute attribs[attributes];
  vertex_binding bindings[attributes];
  fixed_array fixed[fixed_arrays];
};
using vao_pointer = std::shared_ptr<vertex_array_object>;

enum target : u32 {
  array_target,
  pack_target,
  unpack_target,
  indirect_target,
  copy_read_target,
  copy_write_target,
  parameter_target,
  target_count
};

struct saved_client_state {
  GLbitfield mask;
  pixel_store pack, unpack;
  buffer_pointer pack_buffer, unpack_buffer, array_buffer;
  u32 client_texture;
  vertex_array_object bound;
};

struct gl_model {
  int number = -1;   // of the part; -1 for the application's own
  i32 origin_x = 0;  // of its drawable in the application's window, from the bottom left
  i32 origin_y = 0;
  bool has_contents = true;  // false: its buffers have storage and no bytes
  bool expects = false;      // it writes nothing into the application's memory
  gl_context plain;          // for what the calls without state of their own read
  u32 next_name = 1;
  pixel_store pack, unpack;
  u32 client_texture = 0;
  GLuint draw_framebuffer = 0;
  GLuint read_framebuffer = 0;
  std::map<GLuint, buffer_pointer> buffers;
  buffer_pointer bound[target_count];
  std::map<GLuint, vao_pointer> vaos;
  vao_pointer vao;
  std::vector<saved_client_state> saved;
  std::map<u64, u64> syncs;  // of this context: its own handle, and which of the program's fences it is
  u64 next_sync = 1;
  std::set<GLuint> queries;  // ids that have been begun
  std::map<u64, GLuint> active_queries;
  std::map<GLenum, float> transfers;  // what changes the values of pixels, where it is not as at first
  u64 state_digest = 0;
  u64 transfer_digest = 0;
};

// As at first; negative for a name that is none.
float plain_transfer(GLenum name);

gl_model fresh_model(int number, bool has_contents, bool expects);

// What a call was to a context: what its values are, and what its pointers led to.
struct effect {
  int op = -1;
  u64 values = 0;
  u64 memory = 0;
  u64 state = 0;
  std::vector<effect> instead;  // the calls that may stand for this one; in any order, but for the last
};

u64 mixed(u64 digest, u64 value);
u64 mixed_bytes(u64 digest, const void* memory, u64 count);

// The op that stands for all names of one function.
int function_of(int op);

// Changes the model as the call does. Result: whether that is all that the call is.
bool change_state(gl_model* model, int op, const driver::argument_bits& arguments);
bool change_arrays(gl_model* model, int op, const driver::argument_bits& arguments);
bool change_buffers(gl_model* model, int op, const driver::argument_bits& arguments);
void note_state(gl_model* model);

// A buffer by its target; null where none is bound.
buffer_object* bound_buffer(const gl_model& model, GLenum target);
buffer_object* named_buffer(const gl_model& model, GLuint name);

// Where the call maps the buffer of a context, or 0.
u64 map_of_call(gl_model* model, int op, const driver::argument_bits& arguments);

// ---- draws ----

struct sub_draw {
  bool indexed = false;
  u64 first = 0;
  u64 count = 0;
  GLenum type = 0;
  u64 indices = 0;
  i32 base = 0;
  u64 instances = 1;
  u32 base_instance = 0;
};

bool is_draw(int op);
std::vector<sub_draw> draws_of(const gl_model& model, int op, const driver::argument_bits& arguments);
// The digest of all that the call's draws fetch.
u64 fetch(const gl_model& model, int op, const driver::argument_bits& arguments);
std::vector<effect> immediate_calls(const gl_model& model, i32 element);

u32 bytes_of_element(const array_format& format);
u32 bytes_of_index(GLenum type);
u32 stride_of(const fixed_array& array);

// ---- any call ----

// Whether the call only asks, as the library does on its own account too.
bool is_question(int op);

// The call reaches the context. Result: what it was, or an effect without an op where it is state, or a question.
effect reach(gl_model* model, int op, const driver::argument_bits& arguments);

// What a context answers to a call that has reached it: a result, and bytes for the application's memory.
struct reply {
  u64 result = 0;
  u64 at = 0;
  std::vector<u8> bytes;
};
reply reply_of(const gl_model& model, int op, const driver::argument_bits& arguments, const effect& reached);

// Names that the call makes, which are those of the effect.
bool makes_names(int op);

// ---- fences and queries ----

bool is_fence_call(int op);
effect reach_fence(gl_model* model, int op, const driver::argument_bits& arguments);
// The handle that a context gives to one of its fences.
u64 fence_handle(int number, u64 fence);
// What a part says of one of its fences.
GLenum wait_answer(int part, u64 fence);
GLint sync_status(int part, u64 fence);

bool is_query_call(int op);
void change_queries(gl_model* model, int op, const driver::argument_bits& arguments);
// What a context says of a query.
u64 query_answer(int number, GLuint id, GLenum pname);
GLenum reset_answer(int number);

// ---- pixels ----

u8 pixel_at(i32 x, i32 y, u64 byte);
// Writes what a read of pixels gives: to `pixels`, or to the pack buffer of the model.
void write_pixels(gl_model* model, const driver::argument_bits& arguments, u8* pixels);

}  // namespace fuzz

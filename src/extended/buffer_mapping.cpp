// Mapped buffers. The program reads and writes a block of the library's, any number at a time, whose bytes go to all
// parts when they are flushed or unmapped. On the threaded path the parts map nothing: what is written is uploaded to
// them. On the sequential path each part has a mapping of its own, into which the bytes are copied.
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"
#include "extended/part_answers.h"
#include "ops/buffer_targets.h"
#include "sequential/broadcast.h"
#include "startup/config/monitors.h"
#include "threaded/buffer_contents.h"
#include "wgl/records/buffer_maps.h"
#include "wgl/records/glrc.h"
#include "wgl/records/known_buffers.h"

namespace {

// ---- what is mapped ----

// Where GL lets the first byte of a buffer lie, wherever in it a mapping begins.
constexpr u64 map_alignment = 64;

struct buffer_facts {
  GLint64 size = 0;
  GLint is_mapped = 0;
  GLint name = 0;
};

struct range {
  GLintptr offset;
  GLsizeiptr length;
};

bool is_inside(const range& part, GLint64 size) {
  return part.offset >= 0 && part.length >= 0 && part.offset <= size && part.length <= size - part.offset;
}

GLbitfield access_bits(GLenum access) {
  switch (access) {
    case GL_READ_ONLY:
      return GL_MAP_READ_BIT;
    case GL_WRITE_ONLY:
      return GL_MAP_WRITE_BIT;
    case GL_READ_WRITE:
      return GL_MAP_READ_BIT | GL_MAP_WRITE_BIT;
    default:
      return 0;
  }
}

// What the program does not write itself keeps the value that it has.
bool keeps_contents(GLbitfield access) {
  return !(access & (GL_MAP_INVALIDATE_RANGE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT));
}

bool is_written_at_unmap(const buffer_map& map) {
  return (map.access & GL_MAP_WRITE_BIT) && !(map.access & GL_MAP_FLUSH_EXPLICIT_BIT);
}

bool make_block(buffer_map* map, const range& mapped) {
  const u64 into = static_cast<u64>(mapped.offset) % map_alignment;
  map->offset = mapped.offset;
  map->size = static_cast<u64>(mapped.length);
  const u64 room = map->size + into + map_alignment;
  map->block = keeps_contents(map->access) ? calloc(room, 1) : malloc(room);
  if (!map->block) return false;
  const u64 start = reinterpret_cast<u64>(map->block);
  map->bytes = static_cast<u8*>(map->block) + (map_alignment - start % map_alignment) % map_alignment + into;
  return true;
}

// ---- the functions that take the target of a buffer, and those that take its name ----

struct of_target {
  using parameter = glGetBufferParameteriv_op;
  using long_parameter = glGetBufferParameteri64v_op;
  using pointer = glGetBufferPointerv_op;
  using read = glGetBufferSubData_op;
  using write = glBufferSubData_op;
  using define = glBufferData_op;
  using flush = glFlushMappedBufferRange_op;
  using unmap = glUnmapBuffer_op;

  template <class Way>
  static GLint name(const Way& way, GLenum target) {
    GLint bound = 0;
    if (const GLenum query = binding_query(target)) way.template ask<glGetIntegerv_op>(query, &bound);
    return bound;
  }
};

struct of_name {
  using parameter = glGetNamedBufferParameteriv_op;
  using long_parameter = glGetNamedBufferParameteri64v_op;
  using pointer = glGetNamedBufferPointerv_op;
  using read = glGetNamedBufferSubData_op;
  using write = glNamedBufferSubData_op;
  using define = glNamedBufferData_op;
  using flush = glFlushMappedNamedBufferRange_op;
  using unmap = glUnmapNamedBuffer_op;

  template <class Way>
  static GLint name(const Way&, GLuint buffer) {
    return static_cast<GLint>(buffer);
  }
};

// ---- the two paths ----

// Home is the application's own context, or the first part when that one does not follow.
struct threaded_way {
  __osw_thread_state* state = __osw_fetch_thread_state();

  template <class Work>
  void at_home(Work work) const {
    work();
  }

  template <class Op, class... Arguments>
  void ask(Arguments... arguments) const {
    encode_query<Op, void>(arguments...);
  }

  template <class Op, class Result, class... Arguments>
  Result call(Arguments... arguments) const {
    if (mirrors()) return sys_gl<Op>(state)(arguments...);
    const u64* answers = part_answers(state, 0);
    push<Op>(state, arguments...);
    return from_slot<Result>(answers[0]);
  }

  template <class Op, class... Arguments>
  void map(buffer_map* made, Arguments... arguments) const {
    made->home = call<Op, void*>(arguments...);
  }

  template <class Form>
  void take_back(const buffer_map& made, GLuint which) const {
    if (made.home) call<typename Form::unmap, GLboolean>(which);
  }

  // Whether the buffer's storage is new and has no contents: the last command says so, and in no other context can
  // anything have happened since. Programs that write all anew each time ask for new storage first.
  template <class Form>
  bool is_empty(GLuint which) const {
    const __osw_cmd* next = begin_cmd(state);
    if (*state->cmd_queue->fill_count == 0 || !is_only_glrc()) return false;
    const __osw_cmd& last = next[-1];
    return last.type == __osw_cmd_gl && last.op == Form::define::op && from_slot<GLuint>(last.args[0]) == which &&
           !last.args[array_slot<typename Form::define>];
  }

  // Contents are known as long as nobody else can change them unseen, and the parts are told of each call that can.
  bool can_know() const { return mirrors() && is_only_glrc() && !state->glrc->client_state.pack_buffer; }

  template <class Form>
  void read(GLuint which, const buffer_facts& facts, const buffer_map& made) const {
    const auto size = static_cast<u64>(facts.size);
    if (!can_know()) return read_range<Form>(which, made.offset, made.size, made.bytes);
    if (copy_known_contents(made.buffer, size, made.offset, made.size, made.bytes)) return;
    auto* all = is_worth_knowing(made.buffer, size) ? static_cast<u8*>(malloc(size)) : nullptr;
    if (!all) return read_range<Form>(which, made.offset, made.size, made.bytes);
    read_range<Form>(which, 0, size, all);
    memcpy(made.bytes, all + made.offset, made.size);
    enter_known_contents({made.buffer, size, all});
  }

  template <class Form>
  void read_range(GLuint which, GLintptr offset, u64 size, u8* to) const {
    push<typename Form::read>(state, which, offset, static_cast<GLsizeiptr>(size), to);
  }

  // `append` sends bytes of the mapping, counted from its own start, to the parts. What is known of the buffer changes
  // with them and stays known.
  template <class Append>
  void append_written(const buffer_map& map, const range& written, Append append) const {
    known_contents known;
    const bool is_known = take_known_contents(map.buffer, &known);
    const u64 from = static_cast<u64>(map.offset + written.offset), bytes = static_cast<u64>(written.length);
    const bool fits = is_known && from <= known.size && bytes <= known.size - from;
    if (fits) memcpy(known.bytes + from, map.bytes + written.offset, bytes);
    append();
    if (fits) return enter_known_contents(known);
    if (is_known) free(known.bytes);
  }

  template <class Form>
  void* pointer(GLuint which, GLenum pname, void* unanswered) const {
    ask<typename Form::pointer>(which, pname, &unanswered);
    return unanswered;
  }

  // Where the first part has the mapping it takes no upload before the end.
  template <class Form>
  void flush(GLuint which, const range& flushed, const buffer_map* map) const {
    if (!mirrors()) {
      push<typename Form::flush>(state, which, flushed.offset, flushed.length);
      return;
    }
    sys_gl<typename Form::flush>(state)(which, flushed.offset, flushed.length);
    using write = typename Form::write;
    const u64 bytes = static_cast<u64>(flushed.length);
    void* copy = map ? __osw_copy_to_blob(map->bytes + flushed.offset, bytes, Form::flush::name) : nullptr;
    if (!copy) return;
    append_written(*map, flushed, [&] {
      push_with_blobs<write>(state, array_blob<write>, which, map->offset + flushed.offset, flushed.length, copy);
    });
  }

  template <class Form>
  GLboolean unmap(GLuint which, const buffer_map* map) const {
    const auto result = call<typename Form::unmap, GLboolean>(which);
    if (!map) return result;
    const bool has_unsent = mirrors() ? is_written_at_unmap(*map) : map->access & GL_MAP_WRITE_BIT;
    if (!has_unsent) {
      free(map->block);
      return result;
    }
    // The command takes the block over: it stands behind the parameters.
    using write = typename Form::write;
    constexpr u32 block_slot = parameter_count<write>;
    const auto size = static_cast<GLsizeiptr>(map->size);
    append_written(*map, {0, size}, [&] {
      begin_cmd(state)->args[block_slot] = to_slot(map->block);
      push_with_blobs<write>(state, 1u << block_slot, which, map->offset, size, map->bytes);
    });
    return result;
  }
};

// Home is the first part.
struct sequential_way {
  __osw_thread_state* state = __osw_fetch_thread_state();

  template <class Work>
  void at_home(Work work) const {
    if (__osw_part_count < 1) return;
    __osw_switch_to_part(state, 0);
    work();
    __osw_switch_to_app(state);
  }

  template <class Op, class... Arguments>
  void ask(Arguments... arguments) const {
    sys_gl<Op>(state)(arguments...);
  }

  template <class Op, class... Arguments>
  void map(buffer_map* made, Arguments... arguments) const {
    typename Op::type* target = seq_target<Op>(state);
    __osw_for_each_part(state, [&](i32 part) { made->part[part] = target(arguments...); });
    made->home = made->part[0];
  }

  template <class Form>
  void take_back(const buffer_map& made, GLuint which) const {
    __osw_for_each_part(state, [&](i32 part) {
      if (made.part[part]) sys_gl<typename Form::unmap>(state)(which);
    });
  }

  // New storage is read without a wait.
  template <class Form>
  bool is_empty(GLuint) const {
    return false;
  }

  template <class Form>
  void read(GLuint which, const buffer_facts&, const buffer_map& made) const {
    at_home([&] {
      sys_gl<typename Form::read>(state)(which, made.offset, static_cast<GLsizeiptr>(made.size), made.bytes);
    });
  }

  template <class Form>
  void* pointer(GLuint which, GLenum pname, void* unanswered) const {
    void* told = unanswered;
    __osw_for_each_part(state, [&](i32 part) {
      void* own = unanswered;
      seq_target<typename Form::pointer>(state)(which, pname, &own);
      if (part == 0) told = own;
    });
    return told;
  }

  template <class Form>
  void flush(GLuint which, const range& flushed, const buffer_map* map) const {
    auto* target = seq_target<typename Form::flush>(state);
    __osw_for_each_part(state, [=](i32 part) {
      if (map) copy_to_part(*map, part, flushed);
      target(which, flushed.offset, flushed.length);
    });
  }

  template <class Form>
  GLboolean unmap(GLuint which, const buffer_map* map) const {
    auto* target = seq_target<typename Form::unmap>(state);
    GLboolean result = __osw_part_count > 0;
    __osw_for_each_part(state, [&](i32 part) {
      if (map && is_written_at_unmap(*map)) copy_to_part(*map, part, {0, static_cast<GLsizeiptr>(map->size)});
      result = target(which) && result;
    });
    if (map) free(map->block);
    return result;
  }

  // A part whose mapping failed is passed over.
  static void copy_to_part(const buffer_map& map, i32 part, const range& copied) {
    if (!map.part[part]) return;
    memcpy(static_cast<u8*>(map.part[part]) + copied.offset, map.bytes + copied.offset,
           static_cast<u64>(copied.length));
  }
};

// ---- what both do ----

template <class Form, class Way>
buffer_facts facts_of(const Way& way, GLuint which) {
  buffer_facts facts;
  GLint size = 0;
  way.at_home([&] {
    way.template ask<typename Form::parameter>(which, GLenum{GL_BUFFER_MAPPED}, &facts.is_mapped);
    if (sys_gl<typename Form::long_parameter>(way.state)) {
      way.template ask<typename Form::long_parameter>(which, GLenum{GL_BUFFER_SIZE}, &facts.size);
    } else {
      way.template ask<typename Form::parameter>(which, GLenum{GL_BUFFER_SIZE}, &size);
      facts.size = size;
    }
    facts.name = Form::name(way, which);
  });
  return facts;
}

template <class Form, class Way>
const void* home_of(const Way& way, GLuint which) {
  void* home = nullptr;
  way.at_home([&] { way.template ask<typename Form::pointer>(which, GLenum{GL_BUFFER_MAP_POINTER}, &home); });
  return home;
}

// `part` is null for the whole buffer. The rest of the arguments are the call's own.
template <class Form, class Op, class Way, class... Arguments>
void* map_buffer(const Way& way, const range* part, GLbitfield access, GLuint which, Arguments... arguments) {
  const buffer_facts facts = facts_of<Form>(way, which);
  const range wanted = part ? *part : range{0, facts.size};
  const bool has_contents = keeps_contents(access) && !way.template is_empty<Form>(which);
  buffer_map made{};
  made.access = access;
  made.buffer = static_cast<u32>(facts.name);
  made.hglrc = way.state->current_hglrc;
  const bool is_possible = !facts.is_mapped && is_inside(wanted, facts.size);
  if (is_possible && make_block(&made, wanted) && has_contents) way.template read<Form>(which, facts, made);
  way.template map<Op>(&made, which, arguments...);
  if (made.home && made.block && enter_buffer_map(made)) return made.bytes;
  free(made.block);
  way.template take_back<Form>(made, which);
  if (made.home) __osw_report(severity_error, "no memory for the buffer of %s\n", Op::name);
  return nullptr;
}

template <class Form, class Way>
void flush_range(const Way& way, GLuint which, const range& flushed) {
  buffer_map map;
  const bool is_known = find_buffer_map(home_of<Form>(way, which), &map);
  const bool is_valid =
      is_known && (map.access & GL_MAP_FLUSH_EXPLICIT_BIT) && is_inside(flushed, static_cast<GLint64>(map.size));
  way.template flush<Form>(which, flushed, is_valid ? &map : nullptr);
}

template <class Form, class Way>
GLboolean unmap_buffer(const Way& way, GLuint which) {
  buffer_map map;
  const bool is_known = take_buffer_map(home_of<Form>(way, which), &map);
  return way.template unmap<Form>(which, is_known ? &map : nullptr);
}

template <class Form, class Way>
void tell_pointer(const Way& way, GLuint which, GLenum pname, void** told) {
  if (!told) return;
  void* answer = way.template pointer<Form>(which, pname, *told);
  buffer_map map;
  *told = answer && find_buffer_map(answer, &map) ? map.bytes : answer;
}

// New storage ends a mapping.
template <class Form, class Way>
void drop_map_of(const Way& way, GLuint which) {
  if (!has_buffer_maps()) return;
  u32 name = 0;
  way.at_home([&] { name = static_cast<u32>(Form::name(way, which)); });
  drop_buffer_maps(way.state->current_hglrc, 1, &name);
}

}  // namespace

void* changed<glMapBuffer_op>::encode(GLenum target, GLenum access) {
  return map_buffer<of_target, glMapBuffer_op>(threaded_way(), nullptr, access_bits(access), target, access);
}

void* changed<glMapBuffer_op>::broadcast(GLenum target, GLenum access) {
  return map_buffer<of_target, glMapBuffer_op>(sequential_way(), nullptr, access_bits(access), target, access);
}

void* changed<glMapBufferRange_op>::encode(GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access) {
  const range part = {offset, length};
  return map_buffer<of_target, glMapBufferRange_op>(threaded_way(), &part, access, target, offset, length, access);
}

void* changed<glMapBufferRange_op>::broadcast(GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access) {
  const range part = {offset, length};
  return map_buffer<of_target, glMapBufferRange_op>(sequential_way(), &part, access, target, offset, length, access);
}

void changed<glFlushMappedBufferRange_op>::encode(GLenum target, GLintptr offset, GLsizeiptr length) {
  flush_range<of_target>(threaded_way(), target, {offset, length});
}

void changed<glFlushMappedBufferRange_op>::broadcast(GLenum target, GLintptr offset, GLsizeiptr length) {
  flush_range<of_target>(sequential_way(), target, {offset, length});
}

GLboolean changed<glUnmapBuffer_op>::encode(GLenum target) {
  return unmap_buffer<of_target>(threaded_way(), target);
}

GLboolean changed<glUnmapBuffer_op>::broadcast(GLenum target) {
  return unmap_buffer<of_target>(sequential_way(), target);
}

void changed<glGetBufferPointerv_op>::encode(GLenum target, GLenum pname, void** params) {
  tell_pointer<of_target>(threaded_way(), target, pname, params);
}

void changed<glGetBufferPointerv_op>::broadcast(GLenum target, GLenum pname, void** params) {
  tell_pointer<of_target>(sequential_way(), target, pname, params);
}

void changed<glBufferData_op>::encode(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
  drop_map_of<of_target>(threaded_way(), target);
  glBufferData_op::encode(target, size, data, usage);
}

void changed<glBufferData_op>::broadcast(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
  drop_map_of<of_target>(sequential_way(), target);
  repeat_on_each_part<glBufferData_op>(target, size, data, usage);
}

void* glMapNamedBuffer_op::encode(GLuint buffer, GLenum access) {
  return map_buffer<of_name, glMapNamedBuffer_op>(threaded_way(), nullptr, access_bits(access), buffer, access);
}

void* glMapNamedBuffer_op::broadcast(GLuint buffer, GLenum access) {
  return map_buffer<of_name, glMapNamedBuffer_op>(sequential_way(), nullptr, access_bits(access), buffer, access);
}

void* glMapNamedBufferRange_op::encode(GLuint buffer, GLintptr offset, GLsizeiptr length, GLbitfield access) {
  const range part = {offset, length};
  return map_buffer<of_name, glMapNamedBufferRange_op>(threaded_way(), &part, access, buffer, offset, length, access);
}

void* glMapNamedBufferRange_op::broadcast(GLuint buffer, GLintptr offset, GLsizeiptr length, GLbitfield access) {
  const range part = {offset, length};
  return map_buffer<of_name, glMapNamedBufferRange_op>(sequential_way(), &part, access, buffer, offset, length, access);
}

void glFlushMappedNamedBufferRange_op::encode(GLuint buffer, GLintptr offset, GLsizeiptr length) {
  flush_range<of_name>(threaded_way(), buffer, {offset, length});
}

void glFlushMappedNamedBufferRange_op::broadcast(GLuint buffer, GLintptr offset, GLsizeiptr length) {
  flush_range<of_name>(sequential_way(), buffer, {offset, length});
}

GLboolean glUnmapNamedBuffer_op::encode(GLuint buffer) {
  return unmap_buffer<of_name>(threaded_way(), buffer);
}

GLboolean glUnmapNamedBuffer_op::broadcast(GLuint buffer) {
  return unmap_buffer<of_name>(sequential_way(), buffer);
}

void glGetNamedBufferPointerv_op::encode(GLuint buffer, GLenum pname, void** params) {
  tell_pointer<of_name>(threaded_way(), buffer, pname, params);
}

void glGetNamedBufferPointerv_op::broadcast(GLuint buffer, GLenum pname, void** params) {
  tell_pointer<of_name>(sequential_way(), buffer, pname, params);
}

void glNamedBufferData_op::encode(GLuint buffer, GLsizeiptr size, const void* data, GLenum usage) {
  drop_map_of<of_name>(threaded_way(), buffer);
  define_contents<glNamedBufferData_op>(buffer, size, data, usage);
}

void glNamedBufferData_op::broadcast(GLuint buffer, GLsizeiptr size, const void* data, GLenum usage) {
  drop_map_of<of_name>(sequential_way(), buffer);
  repeat_on_each_part<glNamedBufferData_op>(buffer, size, data, usage);
}

void changed<glDeleteBuffers_op>::broadcast(GLsizei n, const GLuint* buffers) {
  drop_buffer_maps(__osw_fetch_thread_state()->current_hglrc, n, buffers);
  repeat_on_each_part<glDeleteBuffers_op>(n, buffers);
}

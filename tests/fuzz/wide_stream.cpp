#include "wide_stream.h"

#include <algorithm>
#include <atomic>
#include <sstream>

namespace fuzz {

namespace {

struct live_context {
  HGLRC context = nullptr;
  gl_model model;
  std::vector<effect> seen;
  std::string fault;  // what no context may be asked for
};

constexpr int most_live = 1 + most_parts;
live_context live_contexts[most_live];  // the application's own, then the parts'
int live_count;

// Parts that agree may write the same bytes at once.
void store(const reply& answer) {
  if (answer.at < lowest_address) return;
  auto* to = reinterpret_cast<u8*>(answer.at);
  for (std::size_t i = 0; i < answer.bytes.size(); ++i) {
    std::atomic_ref<u8>(to[i]).store(answer.bytes[i], std::memory_order_relaxed);
  }
}

void read_window(live_context* own, const driver::argument_bits& a) {
  const bool to_memory = !own->model.bound[pack_target];
  const bool has_pixels = static_cast<i32>(a[2]) > 0 && static_cast<i32>(a[3]) > 0;
  if (own->model.number < 0) {
    if (to_memory && has_pixels) own->fault = "the application's own context writes pixels";
    return;
  }
  if (to_memory && own->model.read_framebuffer && own->model.number > 0) own->fault = "another part reads an object";
  if (to_memory && a[6] < lowest_address) return;
  write_pixels(&own->model, a, reinterpret_cast<u8*>(a[6]));
}

bool maps_buffer(int op) {
  return op == glMapBuffer_op::op || op == glMapBufferRange_op::op || op == glMapNamedBuffer_op::op ||
         op == glMapNamedBufferRange_op::op;
}

bool unmaps_buffer(int op) {
  return op == glUnmapBuffer_op::op || op == glUnmapNamedBuffer_op::op;
}

u64 sync_answer(const gl_model& model, int op, const driver::argument_bits& a, u64 fence) {
  if (op == glFenceSync_op::op) return a[1] ? 0 : fence_handle(model.number, model.next_sync - 1);
  if (op == glClientWaitSync_op::op) return fence ? wait_answer(model.number, fence) : GL_WAIT_FAILED;
  if (op == glGetSynciv_op::op && fence && static_cast<i32>(a[2]) > 0 && a[4]) {
    const GLint value = static_cast<GLenum>(a[1]) == GL_SYNC_STATUS ? sync_status(model.number, fence) : GL_SYNC_FENCE;
    *reinterpret_cast<GLint*>(a[4]) = value;
    if (a[3]) *reinterpret_cast<GLsizei*>(a[3]) = 1;
  }
  return 0;
}

u64 receive_call(live_context* own, int op, const driver::argument_bits& a) {
  gl_model* model = &own->model;
  if (op == glReadPixels_op::op) return read_window(own, a), 0;
  if (maps_buffer(op)) return map_of_call(model, op, a);
  const buffer_object* unmapped = unmaps_buffer(op) ? mapped_buffer(*model, op, a) : nullptr;
  const bool was_mapped = unmapped && unmapped->is_mapped;
  const auto fence = model->syncs.find(a[0]);
  const u64 number = fence == model->syncs.end() ? 0 : fence->second;
  const effect reached = reach(model, op, a);
  if (reached.op >= 0) own->seen.push_back(reached);
  if (unmaps_buffer(op)) return was_mapped;
  if (is_fence_call(op) || op == glGetSynciv_op::op) return sync_answer(*model, op, a, number);
  const reply answer = reply_of(*model, op, a, reached);
  store(answer);
  return answer.result;
}

void note_call(driver::live_call& live) {
  if (live.what.space != driver::op_space::gl) return;
  for (int i = 0; i < live_count; ++i) {
    if (live_contexts[i].context != live.what.context) continue;
    live.result = receive_call(&live_contexts[i], function_of(live.what.op), live.what.arguments);
    return;
  }
}

// ---- comparison ----

const char* fault_of(const effect& expected, const effect& seen) {
  if (seen.op != expected.op) return "another function";
  if (seen.values != expected.values) return "other values";
  if (seen.memory != expected.memory) return "other memory";
  return seen.state == expected.state ? nullptr : "another state";
}

// Whether calls stand for one that could not go as it was: all of them but the last in any order.
const char* fault_of_several(const effect& expected, const std::vector<effect>& seen, std::size_t at) {
  const std::vector<effect>& calls = expected.instead;
  if (at + calls.size() > seen.size()) return "too few calls for an element";
  std::vector<bool> found(calls.size());
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const bool is_last = i + 1 == calls.size();
    std::size_t fits = is_last ? i : 0;
    while (fits < calls.size() && (found[fits] || fault_of(calls[fits], seen[at + i]))) ++fits;
    if (fits == calls.size()) return "other calls for an element";
    found[fits] = true;
  }
  return nullptr;
}

const char* name_of_op(int op) {
  return op < 0 ? "nothing" : driver::name_of(driver::op_space::gl, op);
}

std::string describe(const std::vector<const effect*>& expected, const std::vector<effect>& seen, std::size_t at,
                     std::size_t seen_at, const char* fault) {
  std::ostringstream text;
  text << fault << " at " << at << " of " << expected.size() << " expected and " << seen.size() << " received;";
  text << " expected:";
  for (std::size_t i = at > 3 ? at - 3 : 0; i < std::min(at + 3, expected.size()); ++i) {
    text << ' ' << name_of_op(expected[i]->op);
  }
  text << "; received:";
  for (std::size_t i = seen_at > 3 ? seen_at - 3 : 0; i < std::min(seen_at + 3, seen.size()); ++i) {
    text << ' ' << name_of_op(seen[i].op);
  }
  return text.str();
}

std::string compare_effects(const std::vector<const effect*>& expected, const std::vector<effect>& seen) {
  std::size_t at = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (at == seen.size()) return describe(expected, seen, i, at, "too few calls");
    const bool is_other = !expected[i]->instead.empty() && seen[at].op != expected[i]->op;
    const char* fault = is_other ? fault_of_several(*expected[i], seen, at) : fault_of(*expected[i], seen[at]);
    if (fault) return describe(expected, seen, i, at, fault);
    at += is_other ? expected[i]->instead.size() : 1;
  }
  return at == seen.size() ? "" : describe(expected, seen, expected.size(), at, "too many calls");
}

u64 name_of_buffer(const buffer_pointer& buffer) {
  return buffer ? u64{buffer->name} + 1 : 0;
}

u64 digest_of_object(const vertex_array_object& object) {
  u64 digest = mixed(driver::empty_digest, name_of_buffer(object.elements));
  const auto add_format = [&](bool enabled, const array_format& format) {
    digest = mixed(digest, enabled);
    digest = mixed(digest, u64{static_cast<u32>(format.size)} << 32 | format.type);
    digest = mixed(digest, u64{format.normalized} << 8 | static_cast<u64>(format.kind));
  };
  for (const attribute& attrib : object.attribs) {
    add_format(attrib.enabled, attrib.format);
    digest = mixed(digest, u64{attrib.relative} << 32 | attrib.binding);
  }
  for (const vertex_binding& binding : object.bindings) {
    digest = mixed(mixed(digest, name_of_buffer(binding.buffer)), binding.offset);
    digest = mixed(digest, u64{static_cast<u32>(binding.stride)} << 32 | binding.divisor);
  }
  for (const fixed_array& array : object.fixed) {
    add_format(array.enabled, array.format);
    digest = mixed(mixed(mixed(digest, name_of_buffer(array.buffer)), array.pointer), static_cast<u32>(array.stride));
  }
  return digest;
}

std::string compare_buffers(const gl_model& expected, const gl_model& seen) {
  if (expected.buffers.size() != seen.buffers.size()) return "other buffers";
  for (const auto& [name, buffer] : expected.buffers) {
    const buffer_object* own = named_buffer(seen, name);
    if (!own || !buffer) return "a buffer is missing";
    if (!buffer->is_mapped && own->bytes != buffer->bytes) return "other contents of buffer " + std::to_string(name);
  }
  return {};
}

std::string compare_states(const gl_model& expected, const gl_model& seen) {
  if (expected.state_digest != seen.state_digest) return "another state at the end";
  if (expected.vaos.size() != seen.vaos.size()) return "other array objects";
  for (const auto& [name, object] : expected.vaos) {
    const auto own = seen.vaos.find(name);
    if (own == seen.vaos.end()) return "an array object is missing";
    if (digest_of_object(*object) != digest_of_object(*own->second)) {
      return "another array object " + std::to_string(name);
    }
  }
  if (expected.syncs.size() != seen.syncs.size()) return "other fences";
  return compare_buffers(expected, seen);
}

std::string compare_context(const std::vector<const effect*>& expected, const gl_model& model, live_context* own) {
  std::string fault = own->fault;
  if (fault.empty()) fault = compare_effects(expected, own->seen);
  if (fault.empty()) fault = compare_states(model, own->model);
  own->seen.clear();
  return fault;
}

std::vector<const effect*> effects_of_app(const wide_expectation& all) {
  std::vector<const effect*> list;
  for (const effect& one : all.app_effects) list.push_back(&one);
  return list;
}

std::vector<const effect*> effects_of_part(const wide_expectation& all, int part) {
  std::vector<const effect*> list;
  for (const wide_effect& one : all.part_effects) {
    if (part == 0 || !one.first_only) list.push_back(&one.what);
  }
  return list;
}

// ---- one call ----

void fail_wide(stream* run, const std::string& what) {
  if (run->failure.empty()) run->failure = "after " + std::to_string(run->calls) + " calls: " + what;
}

void check_image(stream* run, const outcome& expected) {
  const auto* pixels = reinterpret_cast<const u8*>(expected.written.at);
  for (std::size_t i = 0; i < expected.image.size(); ++i) {
    if (!expected.is_free[i] && pixels[i] != expected.image[i]) {
      return fail_wide(run, "other pixels read at byte " + std::to_string(i));
    }
  }
}

void check_outcome(stream* run, const ops::row& row, const outcome& expected, u64 result) {
  const u64 mask = row.result_size >= 8 ? ~u64{0} : (u64{1} << row.result_size * 8) - 1;
  if (expected.knows_result && (result & mask) != (expected.result & mask)) {
    fail_wide(run, std::string("another result of ") + row.name);
  }
  const reply& written = expected.written;
  const auto* at = reinterpret_cast<const u8*>(written.at);
  if (written.at >= lowest_address && !std::equal(written.bytes.begin(), written.bytes.end(), at)) {
    fail_wide(run, std::string("something else is written by ") + row.name);
  }
  check_image(run, expected);
}

// What a mapping shows is what the buffer holds, unless the program has given that up.
void check_mapping(stream* run, const ops::row& row, const driver::argument_bits& arguments, u64 result) {
  const int op = function_of(row.op);
  if (!maps_buffer(op)) return;
  const buffer_object* buffer = mapped_buffer(run->wide.part, op, arguments);
  const bool is_expected = buffer && buffer->is_mapped;
  if (is_expected != (result != 0)) return fail_wide(run, std::string("a mapping too many or too few by ") + row.name);
  if (!is_expected) return;
  if ((result - buffer->map_offset) % 64) fail_wide(run, "a mapping that is not aligned");
  constexpr GLbitfield gives_up = GL_MAP_INVALIDATE_RANGE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT;
  const auto* block = reinterpret_cast<const u8*>(result);
  const u8* holds = buffer->bytes.data() + buffer->map_offset;
  if (!(buffer->map_access & gives_up) && !std::equal(holds, holds + buffer->map_length, block)) {
    fail_wide(run, "a mapping that shows something else");
  }
}

// What the choices of other files go by.
void tell_record(stream* run) {
  const gl_model& model = run->wide.part;
  gl_context* record = &run->expected.record;
  record->pack = model.pack;
  record->unpack = model.unpack;
  record->unpack_buffer = model.bound[unpack_target] ? 1 : 0;
  record->pack_buffer = model.bound[pack_target] ? 1 : 0;
}

bool was_mapped_before(stream* run, const ops::row& row, const driver::argument_bits& arguments) {
  const int op = function_of(row.op);
  const buffer_object* buffer = maps_buffer(op) ? mapped_buffer(run->wide.part, op, arguments) : nullptr;
  return buffer && buffer->is_mapped;
}

}  // namespace

void watch_wide(stream* run) {
  live_count = 1 + static_cast<int>(run->rendered.children.size());
  for (int i = 0; i < live_count; ++i) {
    live_context* own = &live_contexts[i];
    *own = {};
    own->context = i == 0 ? run->rendered.context : run->rendered.children[static_cast<std::size_t>(i - 1)];
    own->model = fresh_model(i - 1, i > 0, false);
    if (i == 0) continue;
    const RECT& share = run->expected.shares[static_cast<std::size_t>(i - 1)].part;
    own->model.origin_x = share.left;
    own->model.origin_y = run->wide.height - share.bottom;
  }
  driver::record(driver::recording::digest);
  driver::on_every_call(note_call);
}

void make_wide_call(stream* run, const ops::row& row, const driver::argument_bits& arguments) {
  const bool was_mapped = was_mapped_before(run, row, arguments);
  const outcome expected = expect_wide(&run->wide, row, arguments);
  ++run->calls;
  const u64 result = row.call(row.entry, arguments);
  if (!was_mapped) check_mapping(run, row, arguments, result);
  learn(&run->wide, row, arguments, result);
  check_outcome(run, row, expected, result);
  tell_record(run);
  ruin_blocks_of_call(&run->memory);
}

std::string compare_wide(stream* run) {
  wide_expectation* all = &run->wide;
  std::string fault;
  for (int i = 0; i < live_count; ++i) {
    const std::string who = i == 0 ? "the application's own context: " : "part " + std::to_string(i - 1) + ": ";
    const bool follows = i > 0 || home(all) == &all->app;
    const std::vector<const effect*> expected = i == 0 ? effects_of_app(*all) : effects_of_part(*all, i - 1);
    std::string own;
    if (follows) {
      own = compare_context(expected, i == 0 ? all->app : all->part, &live_contexts[i]);
    } else {
      own = compare_effects(expected, live_contexts[i].seen);
      live_contexts[i].seen.clear();
    }
    if (fault.empty() && !own.empty()) fault = who + own;
  }
  all->app_effects.clear();
  all->part_effects.clear();
  return fault;
}

}  // namespace fuzz

#include "wide_expectation.h"

#include <algorithm>
#include <cstring>

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

u64 low_bytes(u64 bits, u32 size) {
  return size >= 8 ? bits : bits & ((u64{1} << size * 8) - 1);
}

// ---- whom a call reaches ----

struct receivers {
  bool app;
  bool parts;
  bool first_only;
};

bool reads_texture_to_memory(const wide_expectation& all, const ops::row& row) {
  constexpr int reading[] = {glGetTexImage_op::op,        glGetCompressedTexImage_op::op,
                             glGetTextureImage_op::op,    glGetCompressedTextureImage_op::op,
                             glGetTextureSubImage_op::op, glGetCompressedTextureSubImage_op::op,
                             glGetnTexImage_op::op,       glGetnCompressedTexImage_op::op};
  return std::ranges::find(reading, row.op) != std::end(reading) && !all.part.bound[pack_target];
}

// The names of a function go different ways.
receivers receivers_of(const wide_expectation& all, const ops::row& called) {
  const ops::row& row = called.threaded == ops::family::alias ? ops::of(called.base) : called;
  const bool is_app_only = row.threaded == ops::family::app_only;
  if (!is_threaded(all)) return {false, true, is_app_only};
  if (is_app_only) return {true, false, false};
  const bool is_query = row.threaded == ops::family::query || row.op == glGetError_op::op;
  if (is_query) return {all.mirrors, !all.mirrors, row.first_part_answers};
  return {all.mirrors, true, row.first_part_answers || reads_texture_to_memory(all, ops::of(function_of(row.op)))};
}

// The application's own context has no contents in its buffers: of figures in a buffer it is told without any draws.
int told_of_indirect(int op, arguments_of a, driver::argument_bits* told) {
  const auto none_or_wrong = [](u64 count) { return static_cast<i32>(count) < 0 ? count : 0; };
  *told = a;
  switch (op) {
    case glDrawArraysIndirect_op::op:
      *told = {a[0], a[1], 0, 0};
      return glMultiDrawArraysIndirect_op::op;
    case glDrawElementsIndirect_op::op:
      *told = {a[0], a[1], a[2], 0, 0};
      return glMultiDrawElementsIndirect_op::op;
    case glMultiDrawArraysIndirect_op::op:
      (*told)[2] = none_or_wrong(a[2]);
      return op;
    case glMultiDrawElementsIndirect_op::op:
    case glMultiDrawArraysIndirectCount_op::op:
      (*told)[3] = none_or_wrong(a[3]);
      return op;
    case glMultiDrawElementsIndirectCount_op::op:
      (*told)[4] = none_or_wrong(a[4]);
      return op;
    case glDispatchComputeIndirect_op::op:
      *told = {};
      return glDispatchCompute_op::op;
    default:
      return op;
  }
}

void reach_app(wide_expectation* all, int op, arguments_of a) {
  driver::argument_bits told;
  const int as = told_of_indirect(op, a, &told);
  const effect seen = reach(&all->app, as, told);
  if (seen.op >= 0) all->app_effects.push_back(seen);
}

// The expectation has no handles of its own: those of the program name its fences.
driver::argument_bits by_handle(const wide_expectation& all, int op, arguments_of a) {
  driver::argument_bits named = a;
  if (is_fence_call(op) && op != glFenceSync_op::op && !all.fences.contains(a[0])) named[0] = 0;
  return named;
}

outcome outcome_of(const wide_expectation& all, const gl_model& who, const ops::row& row, arguments_of a,
                   const effect& reached) {
  outcome made;
  made.written = reply_of(who, row.op, a, reached);
  made.knows_result = row.result_size != 0 && row.op != glGetString_op::op && row.op != glGetStringi_op::op;
  made.result = low_bytes(made.written.result, row.result_size);
  if (reads_texture_to_memory(all, row) && &who == &all.app) made.written = {};
  return made;
}

// The worst of all whom the call reaches.
outcome expect_reset(const wide_expectation& all) {
  const auto badness = [](GLenum status) {
    return status == GL_NO_ERROR                 ? 0
           : status == GL_GUILTY_CONTEXT_RESET   ? 3
           : status == GL_INNOCENT_CONTEXT_RESET ? 2
                                                 : 1;
  };
  const bool has_own = all.mirrors || !is_threaded(all);
  GLenum worst = has_own ? reset_answer(-1) : GL_NO_ERROR;
  for (int part = 0; part < all.parts; ++part) {
    if (badness(reset_answer(part)) > badness(worst)) worst = reset_answer(part);
  }
  return {.knows_result = true, .result = worst};
}

bool is_special_answer(int op) {
  return is_fence_call(op) || op == glIsSync_op::op || op == glGetSynciv_op::op;
}

// Whose answer the program hears.
const gl_model& answering(const wide_expectation& all, const ops::row& row, const receivers& to) {
  if (!is_threaded(all)) return all.part;
  const bool from_parts = row.op == glGetBufferSubData_op::op || row.op == glGetNamedBufferSubData_op::op ||
                          reads_texture_to_memory(all, row);
  return to.app && !from_parts ? all.app : all.part;
}

outcome expect_any(wide_expectation* all, const ops::row& called, arguments_of a) {
  const ops::row& row = ops::of(function_of(called.op));
  const receivers to = receivers_of(*all, called);
  effect reached;
  // Whoever is not reached knows of the call no less: the expectation follows the state in both.
  if (to.app) reach_app(all, row.op, a);
  if (to.parts) {
    reached = reach(&all->part, row.op, a);
    if (reached.op >= 0) all->part_effects.push_back({reached, to.first_only});
  }
  const effect of_parts = reached;
  const gl_model& who = answering(*all, row, to);
  if (&who == &all->app && !all->app_effects.empty()) reached = all->app_effects.back();
  outcome made = outcome_of(*all, who, row, a, reached);
  // Where everyone writes, the parts are the last.
  if (is_threaded(*all) && called.threaded == ops::family::plain && to.app && to.parts) {
    made.written = reply_of(all->part, row.op, a, of_parts);
  }
  return made;
}

}  // namespace

bool is_threaded(const wide_expectation& all) {
  return all.way == library::path::threaded;
}

gl_model* home(wide_expectation* all) {
  return is_threaded(*all) && all->mirrors ? &all->app : &all->part;
}

void begin(wide_expectation* all, const library::process_setup& setup, const RECT& window) {
  all->way = setup.way;
  all->mirrors = setup.query_on_app_thread;
  all->parts = setup.parts;
  all->width = window.right - window.left;
  all->height = window.bottom - window.top;
  all->app = fresh_model(-1, false, true);
  all->part = fresh_model(0, true, true);
}

outcome expect_wide(wide_expectation* all, const ops::row& row, arguments_of arguments) {
  const int op = function_of(row.op);
  const driver::argument_bits a = by_handle(*all, op, ops::noted(row, arguments).arguments);
  if (op == glReadPixels_op::op) return expect_pixels(all, a);
  if (copies_window(*all, op)) return expect_copy(all, op, a), outcome{};
  if (is_mapping_call(op)) return expect_mapping(all, op, a);
  if (op == glGetGraphicsResetStatus_op::op) return expect_reset(*all);
  if (asks_query(op)) return expect_query_answer(*all, op, a);
  if (is_special_answer(op)) {
    const outcome answer = expect_fence_answer(*all, op, a);
    // Whether there is a fence is known without asking anyone.
    if (op != glIsSync_op::op) expect_any(all, row, a);
    return answer;
  }
  if (is_query_call(op)) note_query(all, op, a);
  return expect_any(all, row, a);
}

void learn(wide_expectation* all, const ops::row& row, arguments_of arguments, u64 result) {
  const int op = function_of(row.op);
  if (op == glFenceSync_op::op && result) {
    all->fences[result] = all->part.next_sync - 1;
    all->part.syncs[result] = all->part.next_sync - 1;
    all->part.syncs.erase(0);
    all->app.syncs[result] = all->app.next_sync - 1;
    all->app.syncs.erase(0);
  }
  if (op == glDeleteSync_op::op) all->fences.erase(arguments[0]);
  const bool maps = op == glMapBuffer_op::op || op == glMapBufferRange_op::op || op == glMapNamedBuffer_op::op ||
                    op == glMapNamedBufferRange_op::op;
  if (!maps || !result) return;
  if (const buffer_object* buffer = mapped_buffer(all->part, op, arguments)) {
    all->blocks[buffer->name] = reinterpret_cast<u8*>(result);
  }
}

}  // namespace fuzz

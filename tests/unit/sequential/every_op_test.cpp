// Every op on the sequential path: which switches and calls it comes down to, in order, and what it returns.
#include <algorithm>
#include <ostream>

#include "dispatch/no_context.h"
#include "dispatch/thread_state.h"
#include "support/call_shapes.h"
#include "support/expected_figures.h"
#include "support/op_rows.h"
#include "support/sequential_steps.h"

namespace {

struct setting {
  int parts;
  bool extended;
};

struct sequential_every_op_test : library::process_test, testing::WithParamInterface<setting> {
  void SetUp() override {
    rendered = sequential::start({.parts = GetParam().parts, .extended = GetParam().extended});
    ASSERT_EQ(ops::all().size(), static_cast<std::size_t>(GetParam().extended ? gl_all_count : gl_op_count));
  }
  library::rendering rendered;
};

bool is_one_of(int op, std::initializer_list<int> ops) {
  return std::ranges::find(ops, op) != ops.end();
}

bool is_copy(int op) {
  return is_one_of(op, {glCopyPixels_op::op, glCopyTexImage1D_op::op, glCopyTexImage2D_op::op,
                        glCopyTexSubImage1D_op::op, glCopyTexSubImage2D_op::op, glCopyTexSubImage3D_op::op});
}

bool is_mapping(int op) {
  return is_one_of(op, {glMapBuffer_op::op, glMapBufferRange_op::op, glUnmapBuffer_op::op});
}

bool is_alias(const ops::row& row) {
  return row.base >= 0;
}

// Whose body runs.
const ops::row& body_of(const ops::row& row) {
  return is_alias(row) ? ops::of(row.base) : row;
}

bool is_for_first_part(const ops::row& row) {
  return row.threaded == ops::family::app_only;
}

bool is_broadcast(const ops::row& body) {
  return !body.is_driver_op && !is_copy(body.op) && !is_mapping(body.op) &&
         !is_one_of(body.op, {glReadPixels_op::op, glGetGraphicsResetStatus_op::op});
}

// Other names than the program's would be mended.
u64 result_on(int part, int op) {
  if (ops::makes_names(ops::of(op))) part = 0;
  return 0x8100000000000000 + 0x0101010101 * static_cast<u64>(part + 1) + static_cast<u64>(op);
}

void check_broadcast(const library::rendering& rendered, const ops::row& row) {
  const driver::argument_bits arguments = ops::distinctive(row);
  std::vector<sequential::step> expected;
  const int parts = static_cast<int>(rendered.children.size());
  for (int part = 0; part < parts; ++part) {
    const HGLRC child = rendered.children[static_cast<std::size_t>(part)];
    driver::set_result_in(child, driver::op_space::gl, row.op, result_on(part, row.op));
    expected.push_back(sequential::switch_to(child));
    expected.push_back({child, ops::noted(row, arguments)});
  }
  expected.push_back(sequential::switch_to(rendered.context));
  driver::clear_calls();
  const u64 result = row.call(row.entry, arguments);
  EXPECT_EQ(sequential::steps(), expected);
  EXPECT_EQ(result, row.result_size ? ops::result_of(row, result_on(parts - 1, row.op)) : 0);
}

// What is the application's context's alone on the other path.
void check_first_part(const library::rendering& rendered, const ops::row& row) {
  const driver::argument_bits arguments = ops::distinctive(row);
  const HGLRC child = rendered.children.front();
  driver::set_result_in(child, driver::op_space::gl, row.op, result_on(0, row.op));
  driver::clear_calls();
  const u64 result = row.call(row.entry, arguments);
  EXPECT_EQ(sequential::steps(), sequential::on_first_part(rendered, {ops::noted(row, arguments)}));
  EXPECT_EQ(result, row.result_size ? ops::result_of(row, result_on(0, row.op)) : 0);
}

void check_nothing(const ops::row& row) {
  driver::clear_calls();
  EXPECT_EQ(row.call(row.entry, ops::distinctive(row)), 0u);
  EXPECT_EQ(sequential::steps(), std::vector<sequential::step>());
}

TEST_P(sequential_every_op_test, each_part_gets_the_call_after_a_switch_to_it) {
  for (const ops::row& row : ops::all()) {
    SCOPED_TRACE(row.name);
    if (ops::shape_of(row.op).what == ops::reads::elsewhere) continue;
    if (row.is_driver_op || row.threaded == ops::family::none) {
      check_nothing(row);
    } else if (is_for_first_part(row)) {
      check_first_part(rendered, row);
    } else if (is_broadcast(body_of(row))) {
      check_broadcast(rendered, row);
    }
    EXPECT_EQ(__osw_fetch_thread_state()->seq_override, nullptr);
    EXPECT_EQ(driver::current_binding().switched_to, rendered.context);
  }
}

bool is_texture_upload(int op) {
  return is_one_of(op, {glTexImage1D_op::op, glTexImage2D_op::op, glTexSubImage1D_op::op, glTexSubImage2D_op::op,
                        glTexSubImage3D_op::op});
}

// The five aliases of copies reach their entry with the upload's arguments; the two of mapping are entered once a part.
// In the extended mode a copy's upload has the entry of its own.
TEST_P(sequential_every_op_test, aliases_of_the_exceptions_reach_their_own_entry) {
  int checked = 0;
  for (const ops::row& row : ops::all()) {
    const ops::row& body = body_of(row);
    if (!is_alias(row) || is_broadcast(body)) continue;
    SCOPED_TRACE(row.name);
    ++checked;
    driver::argument_bits arguments = {};
    driver::clear_calls();
    row.call(row.entry, arguments);
    std::vector<HGLRC> reached;
    for (const sequential::step& step : sequential::steps()) {
      if (step.what.space != driver::op_space::gl) continue;
      EXPECT_NE(step.what.op, body.op);
      const bool has_own_entry = GetParam().extended && is_copy(body.op);
      if (has_own_entry) {
        EXPECT_NE(step.what.op, row.op);
      }
      if (has_own_entry ? is_texture_upload(step.what.op) : step.what.op == row.op) reached.push_back(step.context);
    }
    EXPECT_EQ(reached, rendered.children);
    EXPECT_EQ(__osw_fetch_thread_state()->seq_override, nullptr);
  }
  EXPECT_EQ(checked, figures::aliases_of_exceptions);
}

INSTANTIATE_TEST_SUITE_P(parts, sequential_every_op_test,
                         testing::Values(setting{1, false}, setting{2, false}, setting{4, false}, setting{16, false},
                                         setting{1, true}, setting{2, true}, setting{4, true}, setting{16, true}),
                         [](const auto& instance) {
                           return std::to_string(instance.param.parts) + (instance.param.extended ? "_extended" : "");
                         });

struct shape_test : library::process_test {};

TEST_F(shape_test, the_table_has_the_shapes_of_the_list) {
  library::start();
  int aliases = 0, copies = 0, mappings = 0, reads = 0, stubs = 0, without_result = 0, with_result = 0;
  for (const ops::row& row : ops::all()) {
    const bool stub = __osw_gl_table_seq[row.op] == __osw_void_stub;
    EXPECT_EQ(stub, row.is_driver_op) << row.name;
    if (stub) {
      ++stubs;
    } else if (is_alias(row)) {
      ++aliases;
    } else if (!is_broadcast(row)) {
      copies += is_copy(row.op);
      mappings += is_mapping(row.op);
      reads += row.op == glReadPixels_op::op;
    } else {
      ++(row.result_size ? with_result : without_result);
    }
  }
  EXPECT_EQ(without_result, figures::broadcasts_without_result);
  EXPECT_EQ(with_result, figures::broadcasts_with_result);
  EXPECT_EQ(reads, figures::sequential_reads);
  EXPECT_EQ(copies, figures::sequential_copies);
  EXPECT_EQ(mappings, figures::sequential_mappings);
  EXPECT_EQ(aliases, figures::aliases);
  EXPECT_EQ(stubs, figures::driver_ops);
}

}  // namespace

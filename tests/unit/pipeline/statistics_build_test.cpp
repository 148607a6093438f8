// A build that prints its statistics, as a developer reads it: what the debugger gets while threads draw at random,
// taken apart again and compared with counts that the test has kept itself.
#include <algorithm>
#include <map>
#include <random>

#include "pipeline/statistics.h"
#include "support/issuing.h"
#include "support/op_rows.h"

namespace {

using namespace issuing;

// The figures of one binding.
struct figures {
  std::string hdc, hglrc;
  DWORD thread_id = 0;
  int frames = 0;
  std::map<std::string, int> waits;  // by the text before "sync num"
  int full = 0;
  bool operator==(const figures&) const = default;
};

std::ostream& operator<<(std::ostream& out, const figures& shown) {
  out << "thread " << shown.thread_id << " hdc " << shown.hdc << " hglrc " << shown.hglrc << " frames " << shown.frames
      << " full " << shown.full;
  for (const auto& [name, count] : shown.waits) out << "\n  " << name << " " << count;
  return out;
}

// The forms of the lines. "#" stands for a number, "@" for the 16 digits of a pointer, "*" for a word.
const std::string info = "OGLSPANWrapper Info: ";
const std::string header_form = info + "sync info (thread id = #, hdc = 0x@, hglrc = 0x@, total # frames):\n";
const std::string wait_form = info + "* sync num: #\n";
const std::string full_form = info + "cmd buffer full num: # (cmd buf size = 5000)\n";
const std::string total_form = info + "total frames #, api sync num: #, cmd full sync num: #\n";

std::size_t length_of(char kind, const std::string& line, std::size_t at) {
  const char* allowed = kind == '#' ? "0123456789" : "0123456789ABCDEF";
  if (kind == '*') allowed = "_ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  const std::size_t end = std::min(line.find_first_not_of(allowed, at), line.size());
  return kind == '@' && end - at != 16 ? 0 : end - at;
}

// Whether the line is of the form, to its end, with what stands in the places in `found`.
bool is_of(const std::string& form, const std::string& line, std::vector<std::string>* found) {
  found->clear();
  std::size_t at = 0;
  for (const char expected : form) {
    if (expected == '#' || expected == '@' || expected == '*') {
      const std::size_t length = length_of(expected, line, at);
      if (length == 0) return false;
      found->push_back(line.substr(at, length));
      at += length;
    } else if (at < line.size() && line[at] == expected) {
      ++at;
    } else {
      return false;
    }
  }
  return at == line.size();
}

bool is_label(const std::string& word) {
  const bool of_op = word.starts_with("__osw_gl") || word.starts_with("__osw_wgl");
  return word == "__osw_send_sync_cmd" || (of_op && word.ends_with("_op"));
}

// Takes the lines of one print apart, from `at` on, and moves `at` behind them. Each line has to be of its form, in its
// place, and the last one has to sum up the others.
figures read_print(const std::vector<std::string>& lines, std::size_t* at) {
  figures found;
  std::vector<std::string> words;
  const auto next = [&](const std::string& form) {
    return *at < lines.size() && is_of(form, lines[*at], &words) && (++*at, true);
  };
  if (!next(header_form)) {
    ADD_FAILURE() << lines.at(*at);
    return found;
  }
  found.thread_id = static_cast<DWORD>(std::stoul(words[0]));
  found.hdc = words[1];
  found.hglrc = words[2];
  found.frames = std::stoi(words[3]);
  int sum = 0;
  while (next(wait_form)) {
    EXPECT_TRUE(is_label(words[0])) << words[0];
    EXPECT_FALSE(found.waits.contains(words[0])) << words[0] << " comes twice";
    EXPECT_FALSE(found.waits.contains("__osw_send_sync_cmd")) << words[0] << " comes after the last one";
    found.waits[words[0]] = std::stoi(words[1]);
    sum += std::stoi(words[1]);
  }
  EXPECT_TRUE(found.waits.contains("__osw_send_sync_cmd"));
  if (!next(full_form)) {
    ADD_FAILURE() << lines.at(*at);
    return found;
  }
  found.full = std::stoi(words[0]);
  if (!next(total_form)) {
    ADD_FAILURE() << lines.at(*at);
    return found;
  }
  EXPECT_EQ(std::stoi(words[0]), found.frames);
  EXPECT_EQ(std::stoi(words[1]), sum);
  EXPECT_EQ(std::stoi(words[2]), found.full);
  return found;
}

std::string digits(const void* value) {
  char text[20];
  std::snprintf(text, sizeof text, "%016lX", reinterpret_cast<unsigned long>(value));
  return text;
}

// What the test expects of one thread: it counts by the op list's words, and follows the list's filling itself.
struct counts {
  figures now;
  int filled = 0;

  void begin(const library::rendering& bound) {
    now = {};
    now.thread_id = GetCurrentThreadId();
    now.hdc = digits(bound.window.hdc);
    now.hglrc = digits(bound.context);
    now.waits["__osw_send_sync_cmd"] = 0;
    filled = 0;
    for (const char* name : {"__osw_wglMakeCurrent_op", "__osw_glViewportOffsetZ4_op", "__osw_glDrawableSizeZ4_op"}) {
      wait(name);
    }
  }
  void wait(const std::string& name) {
    ++now.waits[name];
    filled = 0;
  }
  void append() {
    if (++filled < 5000) return;
    ++now.full;
    filled = 0;
  }
  void gl(int op) {
    const ops::row& row = ops::of(op);
    if (row.sync) {
      wait("__osw_" + std::string(row.name) + "_op");
    } else {
      append();
    }
  }
};

// One call at random, and what it counts.
template <class Random>
void call_at_random(Random& random, counts* expected) {
  switch (random() % 64) {
    case 0:
      osw_glGetError();
      return expected->gl(glGetError_op::op);
    case 1:
      osw_glIsEnabled(GL_BLEND);
      return expected->gl(glIsEnabled_op::op);
    case 2:
      osw_glGenLists(1);
      return expected->gl(glGenLists_op::op);
    case 3:
      __osw_send_sync_cmd(state());
      return expected->wait("__osw_send_sync_cmd");
    case 4:
      push_hints(12000);
      for (int i = 0; i < 12000; ++i) expected->append();
      return;
    default:
      osw_glColor4f(1, 2, 3, 4);
      return expected->gl(glColor4f_op::op);
  }
}

// Draws frames at random and notes what has to be printed: after each swap, and before each binding.
std::vector<figures> draw_at_random(unsigned seed, int bindings) {
  std::mt19937 random(seed);
  std::vector<figures> prints;
  counts expected;
  const library::rendering rendered = library::start_rendering();
  for (int binding = 0; binding < bindings; ++binding) {
    expected.begin(rendered);
    for (int frame = 0; frame < 5; ++frame) {
      for (int call = 0; call < 200; ++call) call_at_random(random, &expected);
      osw_wglSwapBuffers(rendered.window.hdc);
      expected.append();
      ++expected.now.frames;
      prints.push_back(expected.now);
    }
    call_at_random(random, &expected);
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    prints.push_back(expected.now);
    // The release is a binding too, of nothing.
    expected.begin({});
    expected.now.waits.erase("__osw_glViewportOffsetZ4_op");
    expected.now.waits.erase("__osw_glDrawableSizeZ4_op");
    if (binding + 1 == bindings) break;
    EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
    prints.push_back(expected.now);
  }
  stop_rendering(rendered);
  // The deletion and the window's end, each a wait; printed when the thread ends.
  expected.wait("__osw_send_sync_cmd");
  expected.wait("__osw_send_sync_cmd");
  prints.push_back(expected.now);
  return prints;
}

std::vector<figures> all_prints(const std::vector<std::string>& lines) {
  std::vector<figures> found;
  for (std::size_t at = 0; at < lines.size() && !testing::Test::HasFailure();) found.push_back(read_print(lines, &at));
  return found;
}

struct statistics_build_test : pipeline_test, testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(, statistics_build_test, testing::Values(1, 2, 4));

TEST_P(statistics_build_test, it_is_switched_on_from_the_start) {
  EXPECT_EQ(__osw_print_sync_info_enabled, 1u);
  EXPECT_EQ(__osw_print_sync_on_swap, 1u);
}

TEST_P(statistics_build_test, every_print_is_that_of_the_test_s_own_counts) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  platform::clear_debug_output();
  std::vector<figures> expected;
  library::run_on_new_thread([&] { expected = draw_at_random(11, 3); });
  const std::vector<figures> found = all_prints(library::reports());
  EXPECT_EQ(found, expected);
  EXPECT_EQ(found.size(), 3 * 6 + 2 + 1u);
  int full = 0;
  for (const figures& one : found) full += one.full;
  EXPECT_GT(full, 0);
}

TEST_P(statistics_build_test, threads_count_for_themselves) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  platform::clear_debug_output();
  std::mutex lock;
  std::map<DWORD, std::vector<figures>> expected;
  unsigned seed = 0;
  library::run_on_new_threads(3, [&] {
    unsigned own_seed;
    {
      const std::lock_guard guard(lock);
      own_seed = ++seed;
    }
    const std::vector<figures> mine = draw_at_random(own_seed, 2);
    const std::lock_guard guard(lock);
    expected[GetCurrentThreadId()] = mine;
  });
  // Every thread's lines by themselves; each comes in two texts.
  std::map<DWORD, std::vector<std::string>> lines;
  std::map<DWORD, std::string> begun;
  for (const platform::debug_text& text : platform::debug_output()) {
    std::string& first = begun[text.thread_id];
    if (first.empty()) {
      first = text.text;
    } else {
      lines[text.thread_id].push_back(first + text.text);
      first.clear();
    }
  }
  ASSERT_EQ(expected.size(), 3u);
  for (const auto& [thread_id, prints] : expected) EXPECT_EQ(all_prints(lines[thread_id]), prints);
}

}  // namespace

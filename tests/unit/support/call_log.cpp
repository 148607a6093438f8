#include "support/call_log.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "dispatch/thread_state.h"
#include "startup/config/monitors.h"
#include "support/op_rows.h"

namespace call_log {

namespace {

struct place {
  u32 argument;
  std::size_t bytes;
};

struct line {
  driver::call what;
  std::vector<std::vector<u8>> memory;
};

// What a thread has called since the last section. The map's own lock is for threads that come and go.
std::mutex lines_lock;
std::map<DWORD, std::vector<line>> lines;
std::map<DWORD, std::string> thread_names;
std::vector<std::string> results;
std::array<std::vector<place>, gl_all_count> places;
HGLRC app_context;
std::atomic<bool> wgl_is_answered;
std::string written;

alignas(16) u8 mapping[mapped_bytes];
std::atomic<GLint> is_mapped;
const char some_string[] = "some string";

// Fixed addresses of no memory, which calls are made with that nobody may read through.
bool leads_nowhere(u64 address) {
  return address >> 56 == 0x7A;
}

bool is_memory(u64 address) {
  return address > 0xFFFF && !leads_nowhere(address) && address >> 48 == 0;
}

template <class Value>
void answer_at(u64 address, Value value) {
  if (is_memory(address)) std::atomic_ref(*reinterpret_cast<Value*>(address)).store(value, std::memory_order_relaxed);
}

GLint integer_of(GLenum name) {
  switch (name) {
    case GL_RED_BITS:
    case GL_GREEN_BITS:
    case GL_BLUE_BITS:
    case GL_ALPHA_BITS:
    case GL_STENCIL_BITS:
      return 8;
    case GL_DEPTH_BITS:
      return 24;
    case GL_READ_BUFFER:
      return GL_BACK;
    case GL_PACK_ALIGNMENT:
    case GL_UNPACK_ALIGNMENT:
      return 4;
    default:
      return 0;
  }
}

u64 buffer_answer(GLenum name) {
  return name == GL_BUFFER_SIZE ? mapped_bytes : name == GL_BUFFER_MAPPED ? static_cast<u64>(is_mapped.load()) : 0;
}

// What the library asks on its own account, and what leads it on.
bool answer_by_op(driver::live_call& live) {
  const driver::argument_bits& arguments = live.what.arguments;
  switch (live.what.op) {
    case glGetIntegerv_op::op:
      answer_at(arguments[1], integer_of(static_cast<GLenum>(arguments[0])));
      return true;
    case glGetBufferParameteriv_op::op:
      answer_at(arguments[2], static_cast<GLint>(buffer_answer(static_cast<GLenum>(arguments[1]))));
      return true;
    case glGetBufferPointerv_op::op:
      answer_at(arguments[2], static_cast<void*>(mapping));
      return true;
    case glMapBuffer_op::op:
    case glMapBufferARB_op::op:
    case glMapBufferRange_op::op:
      live.result = driver::bits_of(&mapping[0]);
      return true;
    case glGetString_op::op:
    case glGetStringi_op::op:
      live.result = driver::bits_of(&some_string[0]);
      return true;
    default:
      return false;
  }
}

std::vector<u8> text_at(u64 address) {
  const auto* first = reinterpret_cast<const char*>(address);
  return is_memory(address) ? std::vector<u8>(first, first + strlen(first)) : std::vector<u8>();
}

std::vector<std::vector<u8>> memory_of(const driver::call& call) {
  std::vector<std::vector<u8>> found;
  if (call.space == driver::op_space::wgl) {
    if (call.op == wglGetProcAddress_op::op) found.push_back(text_at(call.arguments[0]));
    return found;
  }
  for (const place& at : places[static_cast<std::size_t>(call.op)]) {
    const u64 address = call.arguments[at.argument];
    const auto* first = reinterpret_cast<const u8*>(address);
    found.push_back(is_memory(address) ? std::vector<u8>(first, first + at.bytes) : std::vector<u8>());
  }
  return found;
}

void note(driver::live_call& live) {
  line now{live.what, memory_of(live.what)};
  if (live.what.space == driver::op_space::wgl) {
    live.answered = wgl_is_answered.load(std::memory_order_relaxed);
    if (live.answered) live.result = app_answer;
  } else if (!answer_by_op(live)) {
    live.result = live.what.context == app_context ? app_answer : part_answer;
  }
  const std::lock_guard guard(lines_lock);
  lines[live.what.thread_id].push_back(std::move(now));
}

// ---- text ----

// Whether a parameter is an address, and no handle and no number.
template <class T>
constexpr bool is_address = std::is_pointer_v<T> && !std::is_same_v<T, HDC> && !std::is_same_v<T, HGLRC> &&
                            !std::is_same_v<T, HPBUFFERARB> && !std::is_same_v<T, HANDLE>;

template <class Type>
struct addresses;
template <class Result, class... Parameters>
struct addresses<Result(Parameters...)> {
  static constexpr std::array<bool, driver::most_arguments> are = {is_address<Parameters>...};
};

using address_flags = std::array<bool, driver::most_arguments>;
constexpr auto flags_of = []<class Op>() { return addresses<typename Op::type>::are; };
constexpr auto wgl_addresses = wgl_op_list::column<address_flags>(flags_of);

bool is_address_at(const driver::call& call, u32 argument) {
  if (call.space == driver::op_space::wgl) return wgl_addresses.of[call.op][argument];
  return ops::of(call.op).parameters[argument].is_pointer;
}

void write_argument(std::ostream& out, const driver::call& call, u32 argument) {
  const u64 value = call.arguments[argument];
  if (is_address_at(call, argument) && is_memory(value)) {
    out << "memory";
  } else {
    out << "0x" << std::hex << value << std::dec;
  }
}

void write_line(std::ostream& out, const line& one) {
  out << "    in " << std::hex << driver::bits_of(one.what.context) << std::dec << ": "
      << driver::name_of(one.what.space, one.what.op) << '(';
  for (u32 i = 0; i < one.what.argument_count; ++i) {
    out << (i ? ", " : "");
    write_argument(out, one.what, i);
  }
  out << ')';
  for (const std::vector<u8>& memory : one.memory) {
    out << " [" << std::hex;
    for (const u8 byte : memory) out << (byte < 16 ? "0" : "") << static_cast<int>(byte);
    out << ']' << std::dec;
  }
  out << '\n';
}

// The threads by their part, which stays theirs after their end.
void name_threads() {
  thread_names[GetCurrentThreadId()] = "application";
  const auto* state = static_cast<const __osw_thread_state*>(TlsGetValue(__osw_state_slot));
  if (!state || !state->cmd_queue) return;
  for (int part = 0; part < __osw_part_count; ++part) {
    thread_names[state->started.worker_thread_id[part]] = "part " + std::to_string(part);
  }
}

std::string name_of_thread(DWORD id) {
  const auto found = thread_names.find(id);
  return found == thread_names.end() ? "another thread" : found->second;
}

std::map<std::string, std::string> text_of_threads() {
  std::map<std::string, std::string> texts;
  const std::lock_guard guard(lines_lock);
  for (auto& [thread, called] : lines) {
    std::ostringstream out;
    for (const line& one : called) write_line(out, one);
    texts[name_of_thread(thread)] += out.str();
    called.clear();
  }
  for (const platform::debug_text& report : platform::debug_output()) {
    texts[name_of_thread(report.thread_id)] += "    report " + report.text + "\n";
  }
  platform::clear_debug_output();
  return texts;
}

}  // namespace

void begin() {
  driver::record(driver::recording::digest);
  driver::on_every_call(note);
}

void set_app_context(HGLRC context) {
  app_context = context;
}

void answer_wgl(bool answers) {
  wgl_is_answered.store(answers);
}

void read(int op, u32 argument, std::size_t bytes) {
  places.at(static_cast<std::size_t>(op)).push_back({argument, bytes});
}

void read_nothing() {
  for (std::vector<place>& each : places) each.clear();
}

void set_mapped(bool mapped) {
  is_mapped.store(mapped);
}

void add_result(const std::string& call, u64 result, bool may_be_address) {
  std::ostringstream out;
  out << "  " << call << " gave ";
  if (may_be_address && is_memory(result)) {
    out << "memory\n";
  } else {
    out << "0x" << std::hex << result << '\n';
  }
  results.push_back(out.str());
}

void end_section(const std::string& title) {
  library::finish();
  name_threads();
  written += title + "\n";
  for (const std::string& result : results) written += result;
  results.clear();
  for (const auto& [thread, text] : text_of_threads()) {
    if (!text.empty()) written += "  " + thread + "\n" + text;
  }
}

const std::string& text() {
  return written;
}

u64 digest() {
  u64 value = 0xCBF29CE484222325;
  for (const char c : written) value = (value ^ static_cast<u8>(c)) * 0x100000001B3;
  return value;
}

std::string write(const std::string& name) {
  const std::filesystem::path path = std::filesystem::absolute(name);
  std::ofstream(path) << written;
  return path.string();
}

}  // namespace call_log

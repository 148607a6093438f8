// The wide op list held against the public registry of OpenGL: gl.xml of Debian's khronos-api.
#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "ops/names.h"
#include "support/library.h"
#include "support/op_rows.h"

namespace {

struct registry_parameter {
  std::string name;
  std::string declaration;  // with its name, written as we write it
  std::string length;       // of what a pointer names, in the parameters' names; empty where nothing is said
};

struct registry_command {
  std::string result;
  std::vector<registry_parameter> parameters;
  std::vector<std::string> aliases;
};

using registry_commands = std::map<std::string, registry_command>;

std::string registry_text() {
  std::ifstream file("/usr/share/khronos-api/gl.xml");
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// The texts of all elements of a tag, with their own tags. None of those that are read lies in another of its kind.
std::vector<std::string> elements(const std::string& text, const std::string& tag) {
  std::vector<std::string> found;
  const std::string start = "<" + tag, end = "</" + tag + ">";
  for (std::size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
    const char after = text[at + start.size()];
    const std::size_t close = text.find('>', at);
    std::size_t to = close + 1;
    if (after != ' ' && after != '>') {
      at = to;
      continue;
    }
    if (text[close - 1] != '/') to = text.find(end, close) + end.size();
    found.push_back(text.substr(at, to - at));
    at = to;
  }
  return found;
}

std::string attribute(const std::string& element, const std::string& name) {
  const std::string tag = element.substr(0, element.find('>') + 1), start = " " + name + "=\"";
  const std::size_t at = tag.find(start);
  if (at == std::string::npos) return {};
  const std::size_t from = at + start.size();
  return tag.substr(from, tag.find('"', from) - from);
}

// What is left without the tags, with blanks as we set them: one after a star or between two words.
std::string declaration(const std::string& element) {
  std::string text;
  bool in_tag = false, blank = false;
  for (const char c : element) {
    if (c == '<') in_tag = true;
    if (isspace(c)) blank = true;
    if (!in_tag && !isspace(c)) {
      const bool between_words = blank || text.ends_with('*');
      if (!text.empty() && c != '*' && between_words) text += ' ';
      text += c;
      blank = false;
    }
    if (c == '>') in_tag = false;
  }
  return text;
}

std::string name_in(const std::string& element) {
  const std::vector<std::string> names = elements(element, "name");
  return names.empty() ? "" : declaration(names[0]);
}

const registry_commands& commands() {
  static const registry_commands all = [] {
    registry_commands read;
    const std::vector<std::string> lists = elements(registry_text(), "commands");
    if (lists.empty()) return read;
    for (const std::string& element : elements(lists[0], "command")) {
      const std::string prototype = elements(element, "proto").at(0);
      registry_command& command = read[name_in(prototype)];
      command.result = declaration(prototype).substr(0, declaration(prototype).rfind(' '));
      for (const std::string& parameter : elements(element, "param")) {
        command.parameters.push_back({name_in(parameter), declaration(parameter), attribute(parameter, "len")});
      }
      for (const std::string& alias : elements(element, "alias")) command.aliases.push_back(attribute(alias, "name"));
    }
    return read;
  }();
  return all;
}

// As the row has it.
struct row_text {
  std::string result;
  std::string parameters;
};

#define GL_OP(number, function, sync, threaded, sequential, replay, alias, payload, result, parameters, arguments) \
  {#function, {#result, #parameters}},
const std::map<std::string, row_text> wide_rows = {
#include "ops/gl_wide.inc"
};
#undef GL_OP

TEST(registry_test, it_is_there) {
  EXPECT_GT(commands().size(), 3000u);
}

TEST(registry_test, every_command_up_to_4_6_is_an_op) {
  int commands_seen = 0;
  for (const std::string& feature : elements(registry_text(), "feature")) {
    if (attribute(feature, "api") != "gl") continue;
    for (const std::string& required : elements(feature, "require")) {
      for (const std::string& command : elements(required, "command")) {
        ++commands_seen;
        const std::string name = attribute(command, "name");
        EXPECT_GE(find_gl_op(name.c_str(), gl_all_count), 0) << name << " of " << attribute(feature, "number");
      }
    }
  }
  EXPECT_GT(commands_seen, 1000);
}

TEST(registry_test, each_row_has_the_registry_s_parameters) {
  for (const auto& [name, row] : wide_rows) {
    ASSERT_TRUE(commands().contains(name)) << name;
    const registry_command& command = commands().at(name);
    std::string parameters;
    for (const registry_parameter& parameter : command.parameters) {
      parameters += (parameters.empty() ? "" : ", ") + parameter.declaration;
    }
    EXPECT_EQ(row.result, command.result) << name;
    EXPECT_EQ(row.parameters, "(" + parameters + ")") << name;
  }
}

// ---- sizes ----

// What is counted of what a parameter leads to.
template <class Parameter>
struct sized_element {
  using type =
      std::conditional_t<std::is_void_v<std::remove_pointer_t<Parameter>>, u8, std::remove_pointer_t<Parameter>>;
};

// How many elements a payload speaks of; -1 for a string.
int64_t elements_of(const record_payload& payload) {
  return payload.elements;
}
int64_t elements_of(const items_payload& payload) {
  return payload.items * static_cast<int64_t>(payload.elements);
}
int64_t elements_of(const names_payload& payload) {
  return payload.items;
}
int64_t elements_of(const text_payload&) {
  return -1;
}
int64_t elements_of(const block_payload& payload) {
  return payload.bytes;
}
// The registry says nothing of pixels.
int64_t elements_of(const texel_payload&) {
  return -2;
}
int64_t elements_of(const image_payload&) {
  return -2;
}

template <class Payload>
constexpr u64 arrays_in = 1;
template <std::size_t count>
constexpr u64 arrays_in<arrays_payload<count>> = count;

// Of the array with that number among the call's; 0 for a string, which is not there when the payload is asked.
template <class Op, class Result, class... Parameters, class Payload>
int64_t elements_in(Result (*)(Parameters...), const Payload& payload, [[maybe_unused]] std::size_t number) {
  if constexpr (requires { payload.bytes[0]; }) {
    constexpr u64 sizes[] = {sizeof(typename sized_element<Parameters>::type)...};
    constexpr bool is_array[] = {std::is_pointer_v<Parameters>...};
    std::size_t at = 0;
    for (std::size_t left = number; !is_array[at] || left-- > 0; ++at) {
    }
    return static_cast<int64_t>(payload.bytes[number] / sizes[at]);
  } else {
    return elements_of(payload);
  }
}

// Arguments by which counts can be told from each other.
constexpr int64_t value_at(std::size_t parameter) {
  return 3 + 4 * static_cast<int64_t>(parameter);
}

template <class Parameter>
Parameter argument_at(std::size_t parameter) {
  if constexpr (std::is_pointer_v<Parameter>) {
    return nullptr;
  } else {
    return static_cast<Parameter>(value_at(parameter));
  }
}

template <class Op, class Result, class... Parameters, std::size_t... at>
auto payload_said(Result (*)(Parameters...), std::index_sequence<at...>) {
  return Op::payload(argument_at<Parameters>(at)...);
}

// What the registry says: a number, a parameter, or a product of both. -2 for what it does not say.
int64_t elements_expected(const registry_command& command, const std::string& length) {
  if (length.empty() || length.starts_with("COMPSIZE")) return -2;
  int64_t product = 1;
  std::istringstream factors(length);
  for (std::string factor; std::getline(factors, factor, '*');) {
    if (isdigit(factor[0])) {
      product *= std::stoi(factor);
      continue;
    }
    for (std::size_t i = 0; i < command.parameters.size(); ++i) {
      if (command.parameters[i].name == factor) product *= value_at(i);
    }
  }
  return product;
}

// Of which the registry says nothing that could be reckoned with: by the functions' definitions, or by the parameter's
// where a function has several arrays.
const std::map<std::string, std::string> lengths = {
    {"glBindFragDataLocationIndexed", "text"},
    {"glDepthRangeArrayv", "count*2"},
    {"glSamplerParameteriv", "1"},
    {"glSamplerParameterfv", "1"},
    {"glSamplerParameterIiv", "1"},
    {"glSamplerParameterIuiv", "1"},
    {"glTextureParameterfv", "1"},
    {"glTextureParameterIiv", "1"},
    {"glTextureParameterIuiv", "1"},
    {"glTextureParameteriv", "1"},
    {"glPatchParameterfv", "0"},
    {"glViewportArrayv", "count*4"},
    {"glScissorArrayv", "count*4"},
    {"glVertexArrayVertexBuffers", "count"},
    {"glNamedBufferData", "size"},
    {"glNamedBufferSubData", "size"},
    {"glCompressedTextureSubImage1D", "imageSize"},
    {"glCompressedTextureSubImage2D", "imageSize"},
    {"glCompressedTextureSubImage3D", "imageSize"},
    {"pConstantIndex", "numSpecializationConstants"},
    {"pConstantValue", "numSpecializationConstants"},
    {"pEntryPoint", "0"},
    {"glNamedFramebufferDrawBuffers", "n"},
    {"glInvalidateNamedFramebufferData", "numAttachments"},
    {"glInvalidateNamedFramebufferSubData", "numAttachments"},
    {"glClearNamedFramebufferiv", "1"},
    {"glClearNamedFramebufferuiv", "1"},
    {"glClearNamedFramebufferfv", "1"},
};

int64_t elements_wanted(const std::string& name, const registry_command& command, const registry_parameter& array) {
  const int64_t told = elements_expected(command, array.length);
  if (told != -2) return told;
  auto found = lengths.find(name);
  if (found == lengths.end()) found = lengths.find(array.name);
  if (found == lengths.end()) return -2;
  return found->second == "text" ? -1 : elements_expected(command, found->second);
}

// What these read lies in memory or in a buffer, as the context's state has it: draws_test.cpp and
// array_objects_test.cpp say what is copied. A pointer call reads nothing.
const std::set<std::string> copied_by_state = {"glDrawArraysIndirect",
                                               "glDrawElementsIndirect",
                                               "glMultiDrawArraysIndirect",
                                               "glMultiDrawElementsIndirect",
                                               "glMultiDrawArraysIndirectCount",
                                               "glMultiDrawElementsIndirectCount",
                                               "glDrawElementsInstancedBaseInstance",
                                               "glDrawElementsInstancedBaseVertexBaseInstance",
                                               "glVertexAttribLPointer"};

// Whether the row says how much of the program's memory travels. What a query points at is read before it returns, as
// is what the application's own context gets alone.
template <class Op>
constexpr bool copies_memory =
    has_handlers<Op>&& Op::threaded::value != threaded_word::query&& Op::threaded::value != threaded_word::app_only;

// Names that a call makes are written, and have as many elements as the record gets.
template <class Op>
bool is_copied(const registry_parameter& parameter) {
  const bool is_read = parameter.declaration.starts_with("const ") || Op::threaded::value == threaded_word::create;
  // Of arrays of strings an encoder of its own takes care.
  return is_read && std::ranges::count(parameter.declaration, '*') == 1;
}

template <class Op>
void check_sizes() {
  SCOPED_TRACE(Op::name);
  const registry_command& command = commands().at(Op::name);
  u64 arrays = 0;
  constexpr auto type = static_cast<typename Op::type*>(nullptr);
  for (const registry_parameter& parameter : command.parameters) {
    if (!copies_memory<Op> || !is_copied<Op>(parameter)) continue;
    if constexpr (requires { &Op::payload; }) {
      const auto payload = payload_said<Op>(type, std::make_index_sequence<parameter_count<Op>>());
      EXPECT_EQ(elements_in<Op>(type, payload, arrays), elements_wanted(Op::name, command, parameter))
          << parameter.name;
    } else if (!copied_by_state.contains(Op::name)) {
      ADD_FAILURE() << parameter.name << " is not copied";
    }
    ++arrays;
  }
  if constexpr (requires { &Op::payload; }) {
    const auto payload = payload_said<Op>(type, std::make_index_sequence<parameter_count<Op>>());
    EXPECT_EQ(arrays, arrays_in<std::remove_const_t<decltype(payload)>>);
  }
}

TEST(registry_test, each_row_copies_as_much_as_the_registry_says) {
  for_each_wide_op([]<class Op>() { check_sizes<Op>(); });
}

// ---- other names ----

bool is_public_name(const std::string& name) {
  for (const char* suffix : {"ARB", "EXT", "KHR", "OES"}) {
    if (name.ends_with(suffix)) return true;
  }
  return false;
}

// The ops that a command is another name of, directly or by way of a further name.
void find_ops(const std::string& name, std::set<std::string>* seen, std::set<std::string>* found) {
  if (!commands().contains(name) || !seen->insert(name).second) return;
  for (const std::string& alias : commands().at(name).aliases) {
    if (find_gl_op(alias.c_str(), gl_all_count) >= 0) found->insert(alias);
    find_ops(alias, seen, found);
  }
}

#define GL_ALIAS(name, function) {#name, #function},
const std::map<std::string, std::string> listed_aliases = {
#include "ops/gl_aliases.inc"
};
#undef GL_ALIAS

TEST(registry_test, the_other_names_are_those_of_the_registry) {
  std::map<std::string, std::string> wanted;
  for (const auto& [name, command] : commands()) {
    if (find_gl_op(name.c_str(), gl_all_count) >= 0 || !is_public_name(name)) continue;
    std::set<std::string> seen, found;
    find_ops(name, &seen, &found);
    if (found.empty()) continue;
    EXPECT_EQ(found.size(), 1u) << name;
    wanted[name] = *found.begin();
  }
  EXPECT_EQ(listed_aliases, wanted);
}

}  // namespace

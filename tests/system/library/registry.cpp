#include "registry.h"

#include "processes.h"
#include "support/check.h"

namespace {

using function_lists = std::map<std::string, std::vector<std::string>>;

// Gives `take` the text of each element, from its tag on. One without content is its tag.
template <class Take>
void for_each_element(const std::string& text, const std::string& tag, Take take) {
  const std::string start = "<" + tag, end = "</" + tag + ">";
  for (size_t at = 0; (at = text.find(start, at)) != std::string::npos;) {
    const size_t after = at + start.size(), close = text.find('>', after);
    if (close == std::string::npos) return;
    const bool is_other = text[after] != ' ' && text[after] != '>';
    const size_t to = is_other || text[close - 1] == '/' ? close : text.find(end, close);
    if (!is_other) take(text.substr(at, to - at + 1));
    at = to == std::string::npos ? text.size() : to;
  }
}

// Of the element's own tag; empty without one.
std::string attribute(const std::string& element, const std::string& name) {
  const std::string tag = element.substr(0, element.find('>')), start = " " + name + "=\"";
  const size_t at = tag.find(start);
  if (at == std::string::npos) return {};
  const size_t from = at + start.size();
  return tag.substr(from, tag.find('"', from) - from);
}

std::vector<std::string> functions_in(const std::string& element) {
  const std::string start = "<command name=\"";
  std::vector<std::string> functions;
  for_each_element(element, "require", [&](const std::string& required) {
    if (attribute(required, "api").rfind("gles", 0) == 0) return;
    for (size_t at = 0; (at = required.find(start, at)) != std::string::npos;) {
      at += start.size();
      functions.push_back(required.substr(at, required.find('"', at) - at));
    }
  });
  return functions;
}

void read_extensions(const std::string& text, function_lists* lists) {
  const size_t before = lists->size();
  for_each_element(text, "extension",
                   [&](const std::string& element) { (*lists)[attribute(element, "name")] = functions_in(element); });
  CHECK(lists->size() > before);
}

void read_versions(const std::string& text, function_lists* lists) {
  for_each_element(text, "feature", [&](const std::string& element) {
    if (attribute(element, "api") == "gl") (*lists)[attribute(element, "number")] = functions_in(element);
  });
  CHECK(lists->size() > 10);
}

}  // namespace

registry read_registry(const std::string& folder) {
  registry read;
  const std::string gl = read_file(folder + "/gl.xml");
  read_extensions(gl, &read.extensions);
  read_versions(gl, &read.versions);
  read_extensions(read_file(folder + "/wgl.xml"), &read.extensions);
  return read;
}

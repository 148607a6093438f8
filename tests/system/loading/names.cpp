#include "names.h"

#include <algorithm>

#include "ops/ops.h"

namespace {

// The first so many of each list are exported; the others are found by wglGetProcAddress alone.
constexpr size_t exported_wgl = 25, exported_gl = 336;

struct op_names {
  std::vector<std::string> wgl, gl;
};

const op_names names = [] {
  op_names all;
  for_each_wgl_op([&]<class Op>() { all.wgl.push_back(Op::name); });
  for_each_gl_op([&]<class Op>() { all.gl.push_back(Op::name); });
  return all;
}();

void append(std::vector<std::string>* to, const std::vector<std::string>& from, size_t count) {
  to->insert(to->end(), from.begin(), from.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace

const std::vector<std::string>& all_names() {
  static const std::vector<std::string> all = [] {
    std::vector<std::string> both;
    append(&both, names.wgl, names.wgl.size());
    append(&both, names.gl, names.gl.size());
    return both;
  }();
  return all;
}

std::vector<std::string> exported_names() {
  std::vector<std::string> all = {"GlmfBeginGlsBlock", "GlmfCloseMetaFile", "GlmfEndGlsBlock", "GlmfEndPlayback",
                                  "GlmfInitPlayback",  "GlmfPlayGlsRecord", "glDebugEntry"};
  append(&all, names.wgl, exported_wgl);
  append(&all, names.gl, exported_gl);
  std::sort(all.begin(), all.end());
  for (const char* own : {"DisablePerformanceOptimization", "DllMain", "EnablePerformanceOptimization"}) {
    all.push_back(own);
  }
  return all;
}

#include "libraries.h"

#include "paths.h"
#include "pe.h"

namespace {

bool is_wrapper(const pe_image& image) {
  return exports_name(image, "EnablePerformanceOptimization") && exports_name(image, "DisablePerformanceOptimization");
}

// What holds for both libraries alike.
std::wstring library_problem(const std::wstring& path, pe_image* image) {
  static const std::wstring again = L"; put the one that came with oswctl.exe in its place";
  if (!file_exists(path)) {
    return path + L" is missing; \"oswctl run\" places both libraries for its time, \"oswctl install\" for good";
  }
  switch (read_pe(path, image)) {
    case pe_kind::unreadable:
      return path + L" cannot be read; give yourself the right to read it";
    case pe_kind::not_pe:
      return path + L" is damaged or no Windows library" + again;
    case pe_kind::for_32_bit:
      return path + L" is a 32-bit library" + again + L", which is a 64-bit one";
    case pe_kind::for_other_processor:
      return path + L" is a library for another kind of processor" + again;
    case pe_kind::for_64_bit:
      break;
  }
  return image->is_library ? L"" : path + L" is a program, not a library" + again;
}

}  // namespace

std::wstring wrapper_problem(const std::wstring& path) {
  pe_image image;
  const std::wstring problem = library_problem(path, &image);
  if (!problem.empty() || is_wrapper(image)) return problem;
  return path +
         L" is another OpenGL library, not the span wrapper; put the wrapper in its place, the one that came with "
         L"oswctl.exe";
}

std::wstring driver_problem(const std::wstring& path) {
  pe_image image;
  const std::wstring problem = library_problem(path, &image);
  if (!problem.empty()) return problem;
  if (is_wrapper(image)) {
    return path + L" is the span wrapper itself, which must not stand under this name; put the system library there";
  }
  if (exports_name(image, "wglCreateContext") && exports_name(image, "wglGetProcAddress")) return L"";
  return path + L" is no OpenGL library; put the one that came with oswctl.exe in its place";
}

// How wide the results of the GL ops are that return something: the 55 ops by name.
#pragma once

#include <algorithm>
#include <string_view>

namespace result_widths {

inline constexpr std::string_view bytes[] = {"glIsEnabled",
                                             "glIsList",
                                             "glAreTexturesResident",
                                             "glIsTexture",
                                             "glIsQuery",
                                             "glIsBuffer",
                                             "glUnmapBuffer",
                                             "glIsProgram",
                                             "glIsShader",
                                             "glIsEnabledi",
                                             "glIsProgramARB",
                                             "glIsBufferARB",
                                             "glUnmapBufferARB",
                                             "glIsQueryARB",
                                             "glIsRenderbuffer",
                                             "glIsFramebuffer",
                                             "glIsVertexArray",
                                             "glAreTexturesResidentEXT",
                                             "glIsTextureEXT",
                                             "glIsVariantEnabledEXT",
                                             "glIsRenderbufferEXT",
                                             "glIsFramebufferEXT",
                                             "glIsEnabledIndexedEXT",
                                             "glIsQueryEXT"};

inline constexpr std::string_view signed_words[] = {"glRenderMode",
                                                    "glGetAttribLocation",
                                                    "glGetUniformLocation",
                                                    "glGetFragDataLocation",
                                                    "glGetUniformLocationARB",
                                                    "glGetAttribLocationARB",
                                                    "glGetFragDataLocationEXT",
                                                    "glGetUniformBufferSizeEXT"};

inline constexpr std::string_view unsigned_words[] = {"glGetError",
                                                      "glGenLists",
                                                      "glCreateProgram",
                                                      "glCreateShader",
                                                      "glGetHandleARB",
                                                      "glCreateShaderObjectARB",
                                                      "glCreateProgramObjectARB",
                                                      "glCheckFramebufferStatus",
                                                      "glGetUniformBlockIndex",
                                                      "glGenVertexShadersEXT",
                                                      "glGenSymbolsEXT",
                                                      "glBindLightParameterEXT",
                                                      "glBindMaterialParameterEXT",
                                                      "glBindTexGenParameterEXT",
                                                      "glBindTextureUnitParameterEXT",
                                                      "glBindParameterEXT",
                                                      "glCheckFramebufferStatusEXT"};

inline constexpr std::string_view whole[] = {"glGetString",    "glMapBuffer",      "glGetStringi",
                                             "glMapBufferARB", "glMapBufferRange", "glGetUniformOffsetEXT"};

constexpr bool is_among(std::string_view name, const auto& names) {
  return std::ranges::find(names, name) != std::ranges::end(names);
}

}  // namespace result_widths

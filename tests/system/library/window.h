// Windows of the programs under test: an application that knows nothing but opengl32.dll.
#pragma once

#include <windows.h>
// GL's headers need the one above.
#include <GL/gl.h>

#include <GL/glext.h>

struct gl_window {
  HWND hwnd;
  HDC hdc;
  HGLRC context;
};

struct place {
  int left, top, width, height;
};

// All with 8 bits a colour, 24 of depth, 8 of stencil; `accumulating` is double-buffered too.
enum window_kind { double_buffered, single_buffered, accumulating };

// A window without a frame, shown, whose client area lies at `at`: in pixels of the desktop, or of `parent`'s client
// area. It has its pixel format and no context.
gl_window make_bare_window(const place& at, HWND parent = nullptr, window_kind kind = double_buffered);

// The same without a pixel format.
gl_window make_formless_window(const place& at, HWND parent = nullptr);

// As make_bare_window, with a context that is current. A call that fails counts as a failed check.
gl_window make_window(const place& at, HWND parent = nullptr, window_kind kind = double_buffered);

// Binds the window's context to it. A refusal counts as a failed check.
void make_current(const gl_window& window);

// A plain window with a pattern, without GL.
HWND make_frame(const place& at);

// Whether a window whose context is current shows its frame again when it is told to paint, as programs do that are
// uncovered. Wine's X server keeps nothing of what is drawn under another window.
extern thread_local bool repaints;

// Releases and deletes the context, if it has one, then the window.
void destroy_window(const gl_window& window);

void move_window(HWND hwnd, const place& at);
place client_place(HWND hwnd);  // its client area in pixels of the desktop

// Lets the thread's windows have their messages, for so many milliseconds.
void pump(DWORD milliseconds);

// The extensions' entry points that the programs here call, found by wglGetProcAddress under the current context; null
// where there is none.
#define EXTENSION_ENTRIES(ENTRY)                                       \
  ENTRY(PFNGLACTIVETEXTUREPROC, glActiveTexture)                       \
  ENTRY(PFNGLATTACHSHADERPROC, glAttachShader)                         \
  ENTRY(PFNGLBEGINQUERYPROC, glBeginQuery)                             \
  ENTRY(PFNGLBINDATTRIBLOCATIONPROC, glBindAttribLocation)             \
  ENTRY(PFNGLBINDBUFFERPROC, glBindBuffer)                             \
  ENTRY(PFNGLBINDFRAMEBUFFERPROC, glBindFramebuffer)                   \
  ENTRY(PFNGLBINDRENDERBUFFERPROC, glBindRenderbuffer)                 \
  ENTRY(PFNGLBINDVERTEXARRAYPROC, glBindVertexArray)                   \
  ENTRY(PFNGLBLENDCOLORPROC, glBlendColor)                             \
  ENTRY(PFNGLBLENDEQUATIONPROC, glBlendEquation)                       \
  ENTRY(PFNGLBLITFRAMEBUFFERPROC, glBlitFramebuffer)                   \
  ENTRY(PFNGLBUFFERDATAPROC, glBufferData)                             \
  ENTRY(PFNGLBUFFERSUBDATAPROC, glBufferSubData)                       \
  ENTRY(PFNGLCHECKFRAMEBUFFERSTATUSPROC, glCheckFramebufferStatus)     \
  ENTRY(PFNGLCOMPILESHADERPROC, glCompileShader)                       \
  ENTRY(PFNGLCREATEPROGRAMPROC, glCreateProgram)                       \
  ENTRY(PFNGLCREATESHADERPROC, glCreateShader)                         \
  ENTRY(PFNGLDELETEBUFFERSPROC, glDeleteBuffers)                       \
  ENTRY(PFNGLDELETEFRAMEBUFFERSPROC, glDeleteFramebuffers)             \
  ENTRY(PFNGLDELETEPROGRAMPROC, glDeleteProgram)                       \
  ENTRY(PFNGLDELETEQUERIESPROC, glDeleteQueries)                       \
  ENTRY(PFNGLDELETERENDERBUFFERSPROC, glDeleteRenderbuffers)           \
  ENTRY(PFNGLDELETESHADERPROC, glDeleteShader)                         \
  ENTRY(PFNGLDELETEVERTEXARRAYSPROC, glDeleteVertexArrays)             \
  ENTRY(PFNGLDRAWRANGEELEMENTSPROC, glDrawRangeElements)               \
  ENTRY(PFNGLENABLEVERTEXATTRIBARRAYPROC, glEnableVertexAttribArray)   \
  ENTRY(PFNGLDISABLEVERTEXATTRIBARRAYPROC, glDisableVertexAttribArray) \
  ENTRY(PFNGLDRAWELEMENTSINSTANCEDPROC, glDrawElementsInstanced)       \
  ENTRY(PFNGLENDQUERYPROC, glEndQuery)                                 \
  ENTRY(PFNGLFLUSHMAPPEDBUFFERRANGEPROC, glFlushMappedBufferRange)     \
  ENTRY(PFNGLFRAMEBUFFERRENDERBUFFERPROC, glFramebufferRenderbuffer)   \
  ENTRY(PFNGLFRAMEBUFFERTEXTURE2DPROC, glFramebufferTexture2D)         \
  ENTRY(PFNGLGENBUFFERSPROC, glGenBuffers)                             \
  ENTRY(PFNGLGENERATEMIPMAPPROC, glGenerateMipmap)                     \
  ENTRY(PFNGLGENFRAMEBUFFERSPROC, glGenFramebuffers)                   \
  ENTRY(PFNGLGENQUERIESPROC, glGenQueries)                             \
  ENTRY(PFNGLGENRENDERBUFFERSPROC, glGenRenderbuffers)                 \
  ENTRY(PFNGLGENVERTEXARRAYSPROC, glGenVertexArrays)                   \
  ENTRY(PFNGLGETBUFFERPARAMETERIVPROC, glGetBufferParameteriv)         \
  ENTRY(PFNGLGETBUFFERSUBDATAPROC, glGetBufferSubData)                 \
  ENTRY(PFNGLGETPROGRAMIVPROC, glGetProgramiv)                         \
  ENTRY(PFNGLGETQUERYOBJECTUIVPROC, glGetQueryObjectuiv)               \
  ENTRY(PFNGLGETSHADERIVPROC, glGetShaderiv)                           \
  ENTRY(PFNGLGETUNIFORMFVPROC, glGetUniformfv)                         \
  ENTRY(PFNGLGETUNIFORMLOCATIONPROC, glGetUniformLocation)             \
  ENTRY(PFNGLLINKPROGRAMPROC, glLinkProgram)                           \
  ENTRY(PFNGLMAPBUFFERPROC, glMapBuffer)                               \
  ENTRY(PFNGLMAPBUFFERRANGEPROC, glMapBufferRange)                     \
  ENTRY(PFNGLMULTIDRAWARRAYSPROC, glMultiDrawArrays)                   \
  ENTRY(PFNGLMULTITEXCOORD2FPROC, glMultiTexCoord2f)                   \
  ENTRY(PFNGLRENDERBUFFERSTORAGEPROC, glRenderbufferStorage)           \
  ENTRY(PFNGLSHADERSOURCEPROC, glShaderSource)                         \
  ENTRY(PFNGLTEXIMAGE3DPROC, glTexImage3D)                             \
  ENTRY(PFNGLUNIFORM1FPROC, glUniform1f)                               \
  ENTRY(PFNGLUNIFORM1IPROC, glUniform1i)                               \
  ENTRY(PFNGLUNIFORM2FPROC, glUniform2f)                               \
  ENTRY(PFNGLUNIFORM3FVPROC, glUniform3fv)                             \
  ENTRY(PFNGLUNIFORMMATRIX4FVPROC, glUniformMatrix4fv)                 \
  ENTRY(PFNGLUNMAPBUFFERPROC, glUnmapBuffer)                           \
  ENTRY(PFNGLUSEPROGRAMPROC, glUseProgram)                             \
  ENTRY(PFNGLVERTEXATTRIB3FPROC, glVertexAttrib3f)                     \
  ENTRY(PFNGLVERTEXATTRIBPOINTERPROC, glVertexAttribPointer)           \
  ENTRY(PFNGLWINDOWPOS2IPROC, glWindowPos2i)                           \
  ENTRY(PFNGLWINDOWPOS3FPROC, glWindowPos3f)

struct gl_extensions {
#define ENTRY(type, name) type name;
  EXTENSION_ENTRIES(ENTRY)
#undef ENTRY
};

// With a context current. An entry that is missing counts as a failed check.
gl_extensions find_extensions();

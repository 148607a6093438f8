// The host build's <windows.h>: the types, constants and calls that the library makes, with the platform's own names,
// widths and meaning. Behind them stands a simulated desktop that a test sets up and looks at through the headers in
// platform/. Nothing is here that the library does not use.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#define WINAPI
#define APIENTRY
#define CALLBACK
#define CONST const
#define VOID  void
#define TRUE  1
#define FALSE 0

using BOOL = int;
using BYTE = unsigned char;
using CHAR = char;
using SHORT = short;
using WORD = unsigned short;
using INT = int;
using UINT = unsigned int;
using LONG = int;
using ULONG = unsigned int;
using DWORD = unsigned int;
using FLOAT = float;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = ULONG_PTR;
using SIZE_T = ULONG_PTR;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;

using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using LSTATUS = LONG;
using ATOM = WORD;
using COLORREF = DWORD;
using HANDLE = void*;
using HGDIOBJ = void*;

#define DECLARE_HANDLE(name) \
  struct name##__ {          \
    int unused;              \
  };                         \
  typedef name##__* name

DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HDC);
DECLARE_HANDLE(HGLRC);
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HMONITOR);
DECLARE_HANDLE(HMENU);
DECLARE_HANDLE(HICON);
DECLARE_HANDLE(HBRUSH);
using HMODULE = HINSTANCE;
using HCURSOR = HICON;
using PHKEY = HKEY*;

using PROC = INT_PTR (*)();
using FARPROC = INT_PTR (*)();

struct POINT {
  LONG x, y;
};
using LPPOINT = POINT*;

struct RECT {
  LONG left, top, right, bottom;
};
using LPRECT = RECT*;
using LPCRECT = const RECT*;

struct SIZE {
  LONG cx, cy;
};

using WNDPROC = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);
using WNDENUMPROC = BOOL (*)(HWND, LPARAM);
using MONITORENUMPROC = BOOL (*)(HMONITOR, HDC, LPRECT, LPARAM);
using LPTHREAD_START_ROUTINE = DWORD (*)(LPVOID);

struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct WNDCLASSA {
  UINT style;
  WNDPROC lpfnWndProc;
  int cbClsExtra;
  int cbWndExtra;
  HINSTANCE hInstance;
  HICON hIcon;
  HCURSOR hCursor;
  HBRUSH hbrBackground;
  LPCSTR lpszMenuName;
  LPCSTR lpszClassName;
};

struct WINDOWPOS {
  HWND hwnd;
  HWND hwndInsertAfter;
  int x, y, cx, cy;
  UINT flags;
};
using LPWINDOWPOS = WINDOWPOS*;

struct MONITORINFO {
  DWORD cbSize;
  RECT rcMonitor;
  RECT rcWork;
  DWORD dwFlags;
};
using LPMONITORINFO = MONITORINFO*;

struct MONITORINFOEXA : MONITORINFO {
  CHAR szDevice[32];
};
static_assert(sizeof(MONITORINFOEXA) == 72);

struct PIXELFORMATDESCRIPTOR {
  WORD nSize;
  WORD nVersion;
  DWORD dwFlags;
  BYTE iPixelType;
  BYTE cColorBits;
  BYTE cRedBits, cRedShift;
  BYTE cGreenBits, cGreenShift;
  BYTE cBlueBits, cBlueShift;
  BYTE cAlphaBits, cAlphaShift;
  BYTE cAccumBits, cAccumRedBits, cAccumGreenBits, cAccumBlueBits, cAccumAlphaBits;
  BYTE cDepthBits;
  BYTE cStencilBits;
  BYTE cAuxBuffers;
  BYTE iLayerType;
  BYTE bReserved;
  DWORD dwLayerMask;
  DWORD dwVisibleMask;
  DWORD dwDamageMask;
};
using PPIXELFORMATDESCRIPTOR = PIXELFORMATDESCRIPTOR*;
using LPPIXELFORMATDESCRIPTOR = PIXELFORMATDESCRIPTOR*;
static_assert(sizeof(PIXELFORMATDESCRIPTOR) == 40);

struct LAYERPLANEDESCRIPTOR {
  WORD nSize;
  WORD nVersion;
  DWORD dwFlags;
  BYTE iPixelType;
  BYTE cColorBits;
  BYTE cRedBits, cRedShift;
  BYTE cGreenBits, cGreenShift;
  BYTE cBlueBits, cBlueShift;
  BYTE cAlphaBits, cAlphaShift;
  BYTE cAccumBits, cAccumRedBits, cAccumGreenBits, cAccumBlueBits, cAccumAlphaBits;
  BYTE cDepthBits;
  BYTE cStencilBits;
  BYTE cAuxBuffers;
  BYTE iLayerPlane;
  BYTE bReserved;
  COLORREF crTransparent;
};
using LPLAYERPLANEDESCRIPTOR = LAYERPLANEDESCRIPTOR*;

struct WGLSWAP {
  HDC hdc;
  UINT uiFlags;
};

struct POINTFLOAT {
  FLOAT x, y;
};

struct GLYPHMETRICSFLOAT {
  FLOAT gmfBlackBoxX, gmfBlackBoxY;
  POINTFLOAT gmfptGlyphOrigin;
  FLOAT gmfCellIncX, gmfCellIncY;
};
using LPGLYPHMETRICSFLOAT = GLYPHMETRICSFLOAT*;

// The platform's lock may be entered again by the thread that holds it. `state` tells a lock that was never made, or
// was deleted, from one in use; `owner` is the record of the thread that is in it, loaded and stored atomically.
struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
  DWORD state;
  void* owner;
  int entries;  // of the owner
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;
using PCRITICAL_SECTION = CRITICAL_SECTION*;

struct MEMORY_BASIC_INFORMATION {
  LPVOID BaseAddress;
  LPVOID AllocationBase;
  DWORD AllocationProtect;
  SIZE_T RegionSize;
  DWORD State;
  DWORD Protect;
  DWORD Type;
};

// All zero is a condition ready for use, as on the platform.
struct CONDITION_VARIABLE {
  pthread_cond_t condition;
};
using PCONDITION_VARIABLE = CONDITION_VARIABLE*;
#define CONDITION_VARIABLE_INIT \
  {}

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH  2
#define DLL_THREAD_DETACH  3

#define MAX_PATH      260
#define INFINITE      0xFFFFFFFFu
#define STILL_ACTIVE  259u
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT  258u
#define WAIT_FAILED   0xFFFFFFFFu

#define MEM_COMMIT 0x00001000u
#define MEM_FREE   0x00010000u

#define PAGE_NOACCESS          0x01u
#define PAGE_READONLY          0x02u
#define PAGE_READWRITE         0x04u
#define PAGE_WRITECOPY         0x08u
#define PAGE_EXECUTE_READ      0x20u
#define PAGE_EXECUTE_READWRITE 0x40u
#define PAGE_EXECUTE_WRITECOPY 0x80u
#define PAGE_GUARD             0x100u

#define GET_MODULE_HANDLE_EX_FLAG_PIN          0x00000001u
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004u
#define TLS_OUT_OF_INDEXES                     0xFFFFFFFFu
#define INVALID_HANDLE_VALUE                   (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

#define ERROR_SUCCESS               0
#define ERROR_FILE_NOT_FOUND        2
#define ERROR_ACCESS_DENIED         5
#define ERROR_INVALID_HANDLE        6
#define ERROR_NOT_ENOUGH_MEMORY     8
#define ERROR_INVALID_PARAMETER     87
#define ERROR_INSUFFICIENT_BUFFER   122
#define ERROR_MOD_NOT_FOUND         126
#define ERROR_PROC_NOT_FOUND        127
#define ERROR_BUSY                  170
#define ERROR_ENVVAR_NOT_FOUND      203
#define ERROR_MORE_DATA             234
#define ERROR_INVALID_WINDOW_HANDLE 1400
#define ERROR_CANNOT_FIND_WND_CLASS 1407
#define ERROR_CLASS_ALREADY_EXISTS  1410
#define ERROR_TIMEOUT               1460
#define ERROR_INVALID_PIXEL_FORMAT  2000

#define HKEY_CLASSES_ROOT  (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(INT32_MIN))))
#define HKEY_CURRENT_USER  (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(INT32_MIN + 1))))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(INT32_MIN + 2))))
#define REG_NONE           0u
#define REG_SZ             1u
#define REG_BINARY         3u
#define REG_DWORD          4u
#define REG_QWORD          11u

#define SM_CXSCREEN        0
#define SM_CYSCREEN        1
#define SM_XVIRTUALSCREEN  76
#define SM_YVIRTUALSCREEN  77
#define SM_CXVIRTUALSCREEN 78
#define SM_CYVIRTUALSCREEN 79
#define SM_CMONITORS       80

#define MONITORINFOF_PRIMARY 1u

#define CS_VREDRAW 0x0001u
#define CS_HREDRAW 0x0002u
#define CS_OWNDC   0x0020u

#define WS_OVERLAPPED        0x00000000u
#define WS_POPUP             0x80000000u
#define WS_CHILD             0x40000000u
#define WS_VISIBLE           0x10000000u
#define WS_DISABLED          0x08000000u
#define WS_CLIPSIBLINGS      0x04000000u
#define WS_CLIPCHILDREN      0x02000000u
#define WS_CAPTION           0x00C00000u
#define WS_SYSMENU           0x00080000u
#define WS_THICKFRAME        0x00040000u
#define WS_MINIMIZEBOX       0x00020000u
#define WS_MAXIMIZEBOX       0x00010000u
#define WS_OVERLAPPEDWINDOW  0x00CF0000u
#define WS_EX_NOPARENTNOTIFY 0x00000004u

#define WM_NULL              0x0000u
#define WM_CREATE            0x0001u
#define WM_DESTROY           0x0002u
#define WM_MOVE              0x0003u
#define WM_SIZE              0x0005u
#define WM_SHOWWINDOW        0x0018u
#define WM_WINDOWPOSCHANGING 0x0046u
#define WM_WINDOWPOSCHANGED  0x0047u
#define WM_NCDESTROY         0x0082u
#define WM_PARENTNOTIFY      0x0210u

#define SIZE_RESTORED 0

#define SWP_NOSIZE         0x0001u
#define SWP_NOMOVE         0x0002u
#define SWP_NOZORDER       0x0004u
#define SWP_NOREDRAW       0x0008u
#define SWP_NOACTIVATE     0x0010u
#define SWP_FRAMECHANGED   0x0020u
#define SWP_SHOWWINDOW     0x0040u
#define SWP_HIDEWINDOW     0x0080u
#define SWP_NOCOPYBITS     0x0100u
#define SWP_NOOWNERZORDER  0x0200u
#define SWP_NOSENDCHANGING 0x0400u
#define SWP_NOCLIENTSIZE   0x0800u
#define SWP_NOCLIENTMOVE   0x1000u
#define SWP_DEFERERASE     0x2000u
#define SWP_ASYNCWINDOWPOS 0x4000u
#define SMTO_NORMAL        0x0000u
#define SMTO_ABORTIFHUNG   0x0002u

#define SW_HIDE       0
#define SW_SHOWNORMAL 1
#define SW_SHOWNA     8
#define SW_SHOW       5

#define HWND_TOP    (reinterpret_cast<HWND>(static_cast<LONG_PTR>(0)))
#define HWND_BOTTOM (reinterpret_cast<HWND>(static_cast<LONG_PTR>(1)))

#define GWLP_WNDPROC    (-4)
#define GWLP_HINSTANCE  (-6)
#define GWLP_HWNDPARENT (-8)
#define GWLP_ID         (-12)
#define GWL_STYLE       (-16)
#define GWL_EXSTYLE     (-20)
#define GWLP_USERDATA   (-21)

#define OBJ_DC    3u
#define OBJ_MEMDC 10u

#define PFD_DOUBLEBUFFER   0x00000001u
#define PFD_DRAW_TO_WINDOW 0x00000004u
#define PFD_SUPPORT_OPENGL 0x00000020u
#define PFD_TYPE_RGBA      0
#define PFD_MAIN_PLANE     0

#define MB_OK 0x00000000u
#define IDOK  1

// The calling thread's slots. A slot is null in a thread that has not set it.
constexpr DWORD platform_tls_slot_count = 64;
extern constinit thread_local LPVOID platform_tls_slots[platform_tls_slot_count]
    __attribute__((tls_model("initial-exec")));

// In the header because the library reads a slot on each call of the application. Unlike the platform's it leaves the
// last error alone.
inline LPVOID TlsGetValue(DWORD index) {
  return index < platform_tls_slot_count ? platform_tls_slots[index] : nullptr;
}

extern "C" {

DWORD TlsAlloc();
BOOL TlsFree(DWORD index);
BOOL TlsSetValue(DWORD index, LPVOID value);

HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stack, LPTHREAD_START_ROUTINE start, LPVOID argument,
                    DWORD flags, LPDWORD thread_id);
HANDLE GetCurrentThread();
DWORD GetCurrentThreadId();
DWORD GetCurrentProcessId();
BOOL GetExitCodeThread(HANDLE thread, LPDWORD exit_code);
DWORD WaitForSingleObject(HANDLE thread, DWORD milliseconds);
BOOL CloseHandle(HANDLE handle);

void InitializeCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
void InitializeConditionVariable(PCONDITION_VARIABLE condition);
BOOL SleepConditionVariableCS(PCONDITION_VARIABLE condition, PCRITICAL_SECTION section, DWORD milliseconds);
void WakeConditionVariable(PCONDITION_VARIABLE condition);
void WakeAllConditionVariable(PCONDITION_VARIABLE condition);

DWORD GetLastError();
void SetLastError(DWORD error);

SIZE_T VirtualQuery(LPCVOID address, MEMORY_BASIC_INFORMATION* information, SIZE_T size);

HMODULE LoadLibraryA(LPCSTR name);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL GetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module);
DWORD GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size);
DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size);
void OutputDebugStringA(LPCSTR text);
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

LSTATUS RegOpenKeyA(HKEY root, LPCSTR path, PHKEY key);
LSTATUS RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
LSTATUS RegCloseKey(HKEY key);

int GetSystemMetrics(int index);
BOOL EnumDisplayMonitors(HDC hdc, LPCRECT clip, MONITORENUMPROC callback, LPARAM data);
BOOL GetMonitorInfoA(HMONITOR monitor, LPMONITORINFO info);
BOOL IsRectEmpty(const RECT* rect);
BOOL UnionRect(LPRECT out, const RECT* first, const RECT* second);
BOOL IntersectRect(LPRECT out, const RECT* first, const RECT* second);

ATOM RegisterClassA(const WNDCLASSA* window_class);
HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
BOOL DestroyWindow(HWND hwnd);
BOOL IsWindow(HWND hwnd);
LRESULT DefWindowProcA(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT SendMessageTimeoutA(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT flags, UINT milliseconds,
                            DWORD_PTR* result);
LRESULT CallWindowProcA(WNDPROC procedure, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
BOOL SetWindowPos(HWND hwnd, HWND after, int x, int y, int width, int height, UINT flags);
BOOL ShowWindow(HWND hwnd, int command);
BOOL GetClientRect(HWND hwnd, LPRECT out);
BOOL GetWindowRect(HWND hwnd, LPRECT out);
BOOL ClientToScreen(HWND hwnd, LPPOINT point);
BOOL ScreenToClient(HWND hwnd, LPPOINT point);
HWND GetParent(HWND hwnd);
BOOL EnumChildWindows(HWND hwnd, WNDENUMPROC callback, LPARAM data);
HANDLE GetPropA(HWND hwnd, LPCSTR name);
BOOL SetPropA(HWND hwnd, LPCSTR name, HANDLE value);
HANDLE RemovePropA(HWND hwnd, LPCSTR name);
LONG_PTR GetWindowLongPtrA(HWND hwnd, int index);
LONG_PTR SetWindowLongPtrA(HWND hwnd, int index, LONG_PTR value);
DWORD GetWindowThreadProcessId(HWND hwnd, LPDWORD process_id);

HDC GetDC(HWND hwnd);
HDC GetWindowDC(HWND hwnd);
int ReleaseDC(HWND hwnd, HDC hdc);
HWND WindowFromDC(HDC hdc);
DWORD GetObjectType(HGDIOBJ object);
int ChoosePixelFormat(HDC hdc, const PIXELFORMATDESCRIPTOR* descriptor);
int DescribePixelFormat(HDC hdc, int format, UINT size, LPPIXELFORMATDESCRIPTOR descriptor);
int GetPixelFormat(HDC hdc);
BOOL SetPixelFormat(HDC hdc, int format, const PIXELFORMATDESCRIPTOR* descriptor);
BOOL SwapBuffers(HDC hdc);

int _stricmp(const char* first, const char* second);
// As the platform's C runtime: a text of `size` characters or more is cut and not terminated, and one that is cut gives
// -1; %p prints 16 upper-case digits.
int _snprintf(char* buffer, std::size_t size, const char* format, ...) __attribute__((format(printf, 3, 4)));
}

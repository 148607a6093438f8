// A program that keeps what it has to keep beside itself, as many do: it writes beside.txt there, reads it again, and
// adds a line to kept.txt if that is there.
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

std::wstring beside(const wchar_t* name) {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of(L'\\') + 1) + name;
}

}  // namespace

int main() {
  FILE* kept = _wfopen(beside(L"kept.txt").c_str(), L"r+");
  if (kept) {
    fseek(kept, 0, SEEK_END);
    fputs("added\n", kept);
    fclose(kept);
  }
  FILE* file = _wfopen(beside(L"beside.txt").c_str(), L"w");
  if (!file) return 3;
  fputs("written\n", file);
  return fclose(file) == 0 ? 0 : 4;
}

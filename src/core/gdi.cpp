#include "core/gdi.h"

#include <windows.h>

namespace ombrilo::gdi {

namespace {

// Loading again what is loaded only counts references; the module stays for the process's life.
template <class Function>
Function* Find(const char* name) {
  const HMODULE module = LoadLibraryExW(L"gdi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace

uintptr_t CreatePalette(const void* log_palette) {
  const auto create = Find<decltype(::CreatePalette)>("CreatePalette");
  if (create == nullptr) return 0;
  return reinterpret_cast<uintptr_t>(create(static_cast<const LOGPALETTE*>(log_palette)));
}

}  // namespace ombrilo::gdi

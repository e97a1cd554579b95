// Blocks come from the C runtime that the DLL uses, which is not the one that the C++ library of
// MinGW-w64 brings into this program.
#include <windows.h>

#include <cstdlib>

namespace {

template <typename Function>
Function Find(const char* name) {
  // Nothing is kept in a static variable: the guard of one takes memory.
  void* function = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ucrtbase.dll"), name));
  if (function == nullptr) std::abort();
  return reinterpret_cast<Function>(function);
}

}  // namespace

extern "C" void* __wrap_malloc(size_t size) { return Find<void* (*)(size_t)>("malloc")(size); }
extern "C" void __wrap_free(void* block) { Find<void (*)(void*)>("free")(block); }

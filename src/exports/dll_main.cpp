// The entry point of the DLL. There is nothing to prepare and nothing to clean up, for the process
// or for its threads.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
  return TRUE;
}

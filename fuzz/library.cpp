// Every export on images with any header.
#include "trust/fuzz_library.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ombrilo::test::FuzzLibrary({data, size});
  return 0;
}

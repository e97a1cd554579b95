// omb_version: the version of the library that runs, as CMakeLists.txt states it.
#include "ombrilo/ombrilo.h"

static_assert(OMB_VERSION_MAJOR == OMBRILO_PROJECT_MAJOR &&
                  OMB_VERSION_MINOR == OMBRILO_PROJECT_MINOR &&
                  OMB_VERSION_PATCH == OMBRILO_PROJECT_PATCH,
              "ombrilo.h and CMakeLists.txt state different versions");

uint32_t omb_version(void) {
  return OMBRILO_PROJECT_MAJOR << 16 | OMBRILO_PROJECT_MINOR << 8 | OMBRILO_PROJECT_PATCH;
}

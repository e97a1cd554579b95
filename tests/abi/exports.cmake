# The names that the header declares, the .def table lists and the library exports are the same, and
# the library needs nothing at run time but the C runtime. Arguments: SOURCE, LIBRARY.
function(names_in file pattern result)
  file(STRINGS ${file} lines REGEX "${pattern}")
  set(names "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "omb_[A-Za-z0-9_]+" name "${line}")
    list(APPEND names ${name})
  endforeach()
  list(SORT names)
  set(${result} ${names} PARENT_SCOPE)
endfunction()

names_in(${SOURCE}/include/ombrilo/ombrilo.h "^OMB_API " declared)
names_in(${SOURCE}/src/exports/ombrilo.def "^ +omb_" listed)

execute_process(COMMAND nm -D --defined-only --format=posix ${LIBRARY} OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+\n" lines "${symbols}")
set(exported "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE " .*\n" "" name "${line}")
  list(APPEND exported ${name})
endforeach()
list(SORT exported)

if(NOT declared STREQUAL listed OR NOT declared STREQUAL exported)
  message(FATAL_ERROR "declared: ${declared}\nlisted: ${listed}\nexported: ${exported}")
endif()

execute_process(COMMAND readelf -d ${LIBRARY} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED[^\n]+\\[[^]]+\\]" needed "${dynamic}")
foreach(line IN LISTS needed)
  if(NOT line MATCHES "\\[(libc|libm)\\.so|\\[ld-linux")
    message(FATAL_ERROR "The library needs more than the C runtime: ${line}")
  endif()
endforeach()

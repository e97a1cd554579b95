# The names that the header declares, the .def table lists and the library exports are the same, and
# the programs need nothing at run time but what every system has. Arguments: SOURCE, LIBRARY; for
# Windows also OBJDUMP, PROGRAM and VIEWER, for others NM and READELF.
function(fail_unless_same what names)
  if(NOT declared STREQUAL names)
    message(FATAL_ERROR "declared: ${declared}\n${what}: ${names}")
  endif()
endfunction()

file(READ ${SOURCE}/include/ombrilo/ombrilo.h header)
file(READ ${SOURCE}/src/exports/ombrilo.def def)
string(REGEX MATCHALL "\nOMB_API [^(]*" declarations "${header}")
list(TRANSFORM declarations REPLACE ".*(omb_[A-Za-z0-9_]+)$" "\\1" OUTPUT_VARIABLE declared)
list(SORT declared)
string(REGEX MATCHALL "omb_[A-Za-z0-9_]+" listed "${def}")
list(SORT listed)
fail_unless_same(listed "${listed}")

# The tests that concern every export walk one list of calls; those of Windows have their own.
file(READ ${SOURCE}/tests/support/every_export.cpp calls)
foreach(name IN LISTS declared)
  string(FIND "${calls}" "${name}" position)
  if(position EQUAL -1 AND NOT name MATCHES "bmtodib|DIBToDIBSection|CopyWindowToDIB")
    message(FATAL_ERROR "tests/support/every_export.cpp does not call ${name}")
  endif()
endforeach()

if(OBJDUMP)
  function(tables_of program)
    execute_process(COMMAND ${OBJDUMP} -p ${program} OUTPUT_VARIABLE tables
      COMMAND_ERROR_IS_FATAL ANY)
    set(tables "${tables}" PARENT_SCOPE)
  endfunction()

  # "    [   3] omb_crop"
  tables_of(${LIBRARY})
  string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [^\n]+" lines "${tables}")
  list(FILTER lines EXCLUDE REGEX "Export RVA")
  list(TRANSFORM lines REPLACE ".*\\] (\\+base\\[ *[0-9]+\\] *)?([0-9a-f]+ )?" "" OUTPUT_VARIABLE exported)
  list(SORT exported)
  fail_unless_same(exported "${exported}")

  set(c_runtime "api-ms-win-crt-[a-z]+-l1-1-0|msvcrt")
  foreach(program ${LIBRARY} ${PROGRAM} ${VIEWER})
    # gdi32 and user32 are not among them: a server may have no desktop.
    set(allowed "KERNEL32|${c_runtime}")
    if(NOT program STREQUAL "${LIBRARY}")
      string(APPEND allowed "|ole32|WindowsCodecs")
    endif()
    if(program STREQUAL "${VIEWER}")
      string(APPEND allowed "|ADVAPI32|COMCTL32|comdlg32|GDI32|SHELL32|USER32")
    endif()
    tables_of(${program})
    string(REGEX MATCHALL "DLL Name: [^\n]+" imported "${tables}")
    foreach(line IN LISTS imported)
      message("${program}: ${line}")
      if(NOT line MATCHES "^DLL Name: (${allowed})\\.dll$")
        message(FATAL_ERROR "${program} needs more than the system: ${line}")
      endif()
    endforeach()
  endforeach()
  return()
endif()

# What is between these lines of the header is there on Windows alone.
string(REGEX REPLACE ".*\n#if defined\\(_WIN32\\)\n\nstruct HBITMAP__(.*)#endif /\\* _WIN32 \\*/.*"
  "\\1" windows_only "${header}")
string(REGEX MATCHALL "\nOMB_API [^(]*" windows_only "${windows_only}")
list(TRANSFORM windows_only REPLACE ".*(omb_[A-Za-z0-9_]+)$" "\\1")
list(REMOVE_ITEM declared ${windows_only})

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY} OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+\n" lines "${symbols}")
list(TRANSFORM lines REPLACE " .*\n" "" OUTPUT_VARIABLE exported)
list(SORT exported)
fail_unless_same(exported "${exported}")

execute_process(COMMAND ${READELF} -d ${LIBRARY} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED[^\n]+\\[[^]]+\\]" needed "${dynamic}")
foreach(line IN LISTS needed)
  if(NOT line MATCHES "\\[(libc|libm)\\.so|\\[ld-linux")
    message(FATAL_ERROR "The library needs more than the C runtime: ${line}")
  endif()
endforeach()

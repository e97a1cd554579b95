# Which C runtime the DLL shares with its host: images are allocated with its malloc() in the host
# and released with its free() in the library, so both must use the same one. Present-day hosts use
# the universal C runtime, which has been part of Windows since version 10.
set(OMBRILO_C_RUNTIME ucrt CACHE STRING
  "The DLL's C runtime: ucrt, msvcrt, or empty for what the compiler links by itself")
set_property(CACHE OMBRILO_C_RUNTIME PROPERTY STRINGS ucrt msvcrt "")

# For programs without C++'s library, which is built for one C runtime alone.
function(use_c_runtime target)
  if(NOT OMBRILO_C_RUNTIME OR MSVC)
    return()
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_link_libraries(${target} PRIVATE ${OMBRILO_C_RUNTIME})
    return()
  endif()
  # GCC names the runtime in its specs, not in an option. They contain what CMake takes for
  # variables and lists, so they have to be copied verbatim.
  set(specs_file ${PROJECT_BINARY_DIR}/${OMBRILO_C_RUNTIME}.specs)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpspecs
    COMMAND sed "s/-lmsvcrt/-l${OMBRILO_C_RUNTIME}/" OUTPUT_FILE ${specs_file}
    COMMAND_ERROR_IS_FATAL ANY)
  target_link_options(${target} PRIVATE -specs=${specs_file})
endfunction()

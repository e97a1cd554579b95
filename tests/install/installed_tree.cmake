# Installs the build and builds the example against the installed tree, by the CMake package (shared
# and static) and by pkg-config. Arguments: BUILD, SOURCE, C_COMPILER, LIBDIR.
set(prefix ${BUILD}/installed)
set(expected "3 x 2 pixels, the first one 255 255 255")

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_example program)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${program})
  string(STRIP "${output}" output)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "${program} printed: ${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${prefix} ${BUILD}/example)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

# The linker takes along a function that needs libm.
run(${CMAKE_COMMAND} -S ${SOURCE}/examples -B ${BUILD}/example -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_EXE_LINKER_FLAGS=-Wl,--undefined=omb_gammacorrection)
run(${CMAKE_COMMAND} --build ${BUILD}/example)
expect_example(${BUILD}/example/negative)
expect_example(${BUILD}/example/negative_static)

run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
  pkg-config --cflags --libs ombrilo)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${SOURCE}/examples/negative.c -o ${BUILD}/example/by_pkg_config ${flags})
expect_example(${BUILD}/example/by_pkg_config)

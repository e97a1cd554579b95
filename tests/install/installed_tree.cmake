# Installs the build and builds the examples against the installed tree, by the CMake package (shared
# and static) and by pkg-config; those in other languages run where their tools are found.
# Arguments: BUILD, SOURCE, VERSION, GENERATOR, C_COMPILER, CXX_COMPILER, LIBDIR.
set(prefix ${BUILD}/installed)

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_example size)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${ARGN})
  string(STRIP "${output}" output)
  if(NOT output STREQUAL "${size} pixels, the first one 255 255 255")
    message(FATAL_ERROR "${ARGN} printed: ${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${prefix} ${BUILD}/example)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

# One version everywhere. The header's is compared where it is compiled.
foreach(file bindings/js/package.json packaging/vcpkg/ombrilo/vcpkg.json meson.build CHANGELOG.md)
  file(STRINGS ${SOURCE}/${file} stated LIMIT_COUNT 1 REGEX "version\"?: |^## [0-9]")
  if(NOT stated MATCHES "[ \"']${VERSION}[ \"']")
    message(FATAL_ERROR "${file} does not state version ${VERSION} first: ${stated}")
  endif()
endforeach()

file(GLOB license ${prefix}/share/doc/ombrilo/LICENSE)
if(NOT license)
  message(FATAL_ERROR "The license was not installed")
endif()

foreach(file man/man1/omb.1 bash-completion/completions/omb zsh/site-functions/_omb
             fish/vendor_completions.d/omb.fish)
  file(READ ${prefix}/share/${file} text)
  if(NOT text MATCHES "enhancepage")
    message(FATAL_ERROR "${file} does not know the steps")
  endif()
endforeach()

# As a part of another project, whose own targets are exported.
file(REMOVE_RECURSE ${BUILD}/parent)
run(${CMAKE_COMMAND} -G "${GENERATOR}" -S ${SOURCE}/tests/install/parent -B ${BUILD}/parent
  -DOMBRILO_SOURCE=${SOURCE} -DCMAKE_C_COMPILER=${C_COMPILER}
  -DCMAKE_CXX_COMPILER=${CXX_COMPILER})

# The linker takes along a function that needs libm.
run(${CMAKE_COMMAND} -G "${GENERATOR}" -S ${SOURCE}/examples -B ${BUILD}/example
  -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
  -DCMAKE_EXE_LINKER_FLAGS=-Wl,--undefined=omb_gammacorrection)
run(${CMAKE_COMMAND} --build ${BUILD}/example)
expect_example("3 x 2" ${BUILD}/example/negative)
expect_example("3 x 2" ${BUILD}/example/negative_static)
expect_example("6 x 4" ${BUILD}/example/scaled)
expect_example("200 x 150" ${BUILD}/example/thumbnail)
if(EXISTS ${BUILD}/example/threads)
  foreach(program threads bands)
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${BUILD}/example/${program} 3)
  endforeach()
endif()

run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig
  pkg-config --cflags --libs ombrilo)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${SOURCE}/examples/negative.c -o ${BUILD}/example/by_pkg_config ${flags})
expect_example("3 x 2" ${BUILD}/example/by_pkg_config)

find_program(PYTHON python3)

# The declarations that are written from the header, and a program with each; all of the header's
# functions are in them.
file(STRINGS ${SOURCE}/include/ombrilo/ombrilo.h exports REGEX "^OMB_API ")
list(LENGTH exports exports)
function(declare language file)
  execute_process(COMMAND ${PYTHON} ${SOURCE}/bindings/declarations/declare.py
      ${prefix}/include/ombrilo/ombrilo.h ${language}
    OUTPUT_FILE ${BUILD}/example/${file} COMMAND_ERROR_IS_FATAL ANY)
  file(STRINGS ${BUILD}/example/${file} lines REGEX "external OmbriloDll|static extern")
  list(LENGTH lines count)
  if(NOT count EQUAL exports)
    message(FATAL_ERROR "${file} declares ${count} functions, the header ${exports}")
  endif()
endfunction()
if(PYTHON)
  declare(pascal Ombrilo.pas)
  declare(csharp Ombrilo.cs)
endif()

find_program(FPC fpc)
if(FPC)
  run(${FPC} -Mdelphi -Fl${prefix}/${LIBDIR} -o${BUILD}/example/pascal ${SOURCE}/examples/scaled.dpr)
  expect_example("6 x 4" ${BUILD}/example/pascal)
  run(${FPC} -Mdelphi -Fl${prefix}/${LIBDIR} -Fu${BUILD}/example -FU${BUILD}/example
    -o${BUILD}/example/declared ${SOURCE}/tests/declarations/declared.dpr)
  expect_example("6 x 4" ${BUILD}/example/declared)
endif()
find_program(MCS mcs)
find_program(MONO mono)
if(MCS AND MONO)
  run(${MCS} -out:${BUILD}/example/cs.exe ${SOURCE}/examples/Scaled.cs)
  expect_example("6 x 4" ${MONO} ${BUILD}/example/cs.exe)
  run(${MCS} -out:${BUILD}/example/declared.exe ${SOURCE}/tests/declarations/Declared.cs
    ${BUILD}/example/Ombrilo.cs)
  expect_example("6 x 4" ${MONO} ${BUILD}/example/declared.exe)
endif()

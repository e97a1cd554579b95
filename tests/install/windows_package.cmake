# Makes the Windows package of the build twice and looks at it: that both are equal, what is in them,
# that nothing but code is in the programs, that linking these again gives the same bytes, that the
# signing command gets each of them, and that a program links with the package and runs. Arguments:
# NINJA, OBJDUMP, COMPILER, SPECS, RUNNER (a list), and those of cmake/windows_package.cmake but OUT.
cmake_minimum_required(VERSION 3.21)
function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(must_be_equal first second)
  run(${CMAKE_COMMAND} -E compare_files ${first} ${second})
endfunction()

set(work ${BUILD}/package_test)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

# Each program linked once more, at another time and in another place.
file(GLOB programs RELATIVE ${BUILD} ${BUILD}/ombrilo.dll ${BUILD}/omb.exe ${BUILD}/ombview.exe)
foreach(program IN LISTS programs)
  run(${CMAKE_COMMAND} -E chdir ${BUILD} ${NINJA} -t commands -s ${program})
  string(REGEX REPLACE "(-o |--out-implib,)" "\\1package_test/" command "${output}")
  run(sh -c "cd ${BUILD} && ${command}")
  must_be_equal(${BUILD}/${program} ${work}/${program})
endforeach()

set(SIGN_COMMAND "sh -c 'echo $0 >>${work}/signed'")
foreach(folder again package)
  set(OUT ${work}/${folder})
  include(${SOURCE}/cmake/windows_package.cmake)
endforeach()
foreach(result IN LISTS results)
  cmake_path(GET result FILENAME file)
  must_be_equal(${result} ${work}/again/${file})
endforeach()

# The zip as somebody gets it.
file(ARCHIVE_EXTRACT INPUT ${out}/${name}.zip DESTINATION ${work})
file(GLOB_RECURSE files RELATIVE ${work}/${name} ${work}/${name}/*)
set(wanted bin/ombrilo.dll include/ombrilo/ombrilo.h lib/ombrilo.def lib/ombrilo.lib
  lib/libombrilo.dll.a lib/cmake/ombrilo/ombriloConfig.cmake bindings/Ombrilo.pas
  bindings/Ombrilo.cs examples/negative.c LICENSE.txt README.txt)
if(EXISTS ${BUILD}/omb.exe)
  list(APPEND wanted bin/omb.exe bin/ombview.exe)
endif()
foreach(file IN LISTS wanted)
  if(NOT file IN_LIST files)
    message(FATAL_ERROR "the package lacks ${file}; it has ${files}")
  endif()
endforeach()
file(STRINGS ${work}/signed signed)
foreach(program IN LISTS programs)
  if(NOT program IN_LIST signed)
    message(FATAL_ERROR "${program} is not signed, but ${signed}")
  endif()
  run(${OBJDUMP} -h ${program})
  if(output MATCHES "\\.debug_" OR NOT output MATCHES "gnu_debuglink")
    message(FATAL_ERROR "${program} is not stripped, or does not know its debug file\n${output}")
  endif()
  # Not in the middle of a path: libraries are built in folders that may end like this one.
  file(STRINGS ${program} paths REGEX "(^|[^A-Za-z0-9_-])${SOURCE}/")
  if(paths)
    message(FATAL_ERROR "${program} holds paths of this machine: ${paths}")
  endif()
endforeach()

if(ARCHITECTURE STREQUAL "x64")
  file(ARCHIVE_EXTRACT INPUT ${out}/Ombrilo.${VERSION}.nupkg DESTINATION ${work}/nuget)
  foreach(file Ombrilo.nuspec _rels/.rels build/native/Ombrilo.targets
      build/native/lib/x64/ombrilo.lib runtimes/win-x64/native/ombrilo.dll
      contentFiles/cs/any/Ombrilo.cs)
    if(NOT EXISTS ${work}/nuget/${file})
      message(FATAL_ERROR "the NuGet package lacks ${file}")
    endif()
  endforeach()
endif()

# A host of the universal C runtime, as the README says.
run(${COMPILER} ${SPECS} ${work}/${name}/examples/negative.c -I${work}/${name}/include
  ${work}/${name}/lib/ombrilo.lib -o ${work}/${name}/bin/negative.exe)
if(RUNNER)
  run(${RUNNER} ${work}/${name}/bin/negative.exe)
  if(NOT output MATCHES "3 x 2 pixels, the first one 255 255 255")
    message(FATAL_ERROR "negative.exe printed: ${output}")
  endif()
endif()

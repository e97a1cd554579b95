# Makes the Windows package of the build and looks at it: what is in it, that nothing but code is in
# the programs, that another build elsewhere gives the same DLL, that the signing command gets every
# program, and that a program links with the package and runs. Arguments: BUILD, SOURCE, GENERATOR,
# TOOLCHAIN, OBJDUMP, COMPILER, RUNNER (a list), and those of cmake/windows_package.cmake.
function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(work ${BUILD}/package_test)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})
set(SIGN_COMMAND "sh -c 'echo $0 >>${work}/signed'")
include(${SOURCE}/cmake/windows_package.cmake)

# A second build of the DLL in another place.
run(${CMAKE_COMMAND} -G "${GENERATOR}" -S ${SOURCE} -B ${work}/elsewhere
  -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_BUILD_TYPE=Release -DOMBRILO_TOOLS=OFF
  -DOMBRILO_TESTS=OFF)
run(${CMAKE_COMMAND} --build ${work}/elsewhere --target ombrilo)
foreach(file ombrilo.dll libombrilo.dll.a)
  file(SHA256 ${BUILD}/${file} first)
  file(SHA256 ${work}/elsewhere/${file} second)
  if(NOT first STREQUAL second)
    message(FATAL_ERROR "two builds of ${file} differ")
  endif()
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
if(EXISTS ${work}/signed)
  file(STRINGS ${work}/signed signed)
endif()
list(LENGTH programs count)
list(LENGTH signed signed_count)
if(NOT count EQUAL signed_count)
  message(FATAL_ERROR "to sign there were ${programs}, signed are ${signed}")
endif()
foreach(program IN LISTS programs)
  run(${OBJDUMP} -h ${program})
  if(output MATCHES "\\.debug_" OR NOT output MATCHES "gnu_debuglink")
    message(FATAL_ERROR "${program} is not stripped, or does not know its debug file\n${output}")
  endif()
  file(STRINGS ${program} paths REGEX "${SOURCE}")
  if(paths)
    message(FATAL_ERROR "${program} holds paths of this machine: ${paths}")
  endif()
endforeach()

if(ARCHITECTURE STREQUAL "x64")
  file(ARCHIVE_EXTRACT INPUT ${out}/Ombrilo.${VERSION}.nupkg DESTINATION ${work}/nuget)
  foreach(file ombrilo.nuspec _rels/.rels build/native/ombrilo.targets
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
run(${RUNNER} ${work}/${name}/bin/negative.exe)
if(NOT output MATCHES "3 x 2 pixels, the first one 255 255 255")
  message(FATAL_ERROR "negative.exe printed: ${output}")
endif()

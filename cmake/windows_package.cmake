# Makes what Windows developers download of a finished build: a zip with the library and the
# programs, one with their debug files, and a NuGet package. The same build gives the same bytes.
# Arguments: BUILD, SOURCE, VERSION, ARCHITECTURE (x64 or x86), OBJCOPY, STRIP, PYTHON; X86_DLL, the
# 32-bit DLL for the NuGet package; SIGN_COMMAND, run with each file that Windows runs; OUT, the
# folder that is made.
set(out ${OUT})
set(name ombrilo-${VERSION}-windows-${ARCHITECTURE})
set(stage ${out}/${name})
set(debug ${out}/${name}-debug)
file(REMOVE_RECURSE ${out})
file(MAKE_DIRECTORY ${debug})

function(must)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

function(zip directory archive)
  must(${PYTHON} ${SOURCE}/cmake/zip.py ${archive} ${directory} ${ARGN})
endfunction()

must(${CMAKE_COMMAND} --install ${BUILD} --prefix ${stage})

file(GLOB programs ${stage}/bin/*.dll ${stage}/bin/*.exe)
# The time in a program is the one that the linker wrote, which is none: these tools write the present one
# unless dates are preserved.
foreach(program IN LISTS programs)
  cmake_path(GET program FILENAME file)
  must(${OBJCOPY} --preserve-dates --only-keep-debug ${program} ${debug}/${file}.debug)
  must(${STRIP} --preserve-dates --strip-all ${program})
  must(${OBJCOPY} --preserve-dates --add-gnu-debuglink=${debug}/${file}.debug ${program})
  if(SIGN_COMMAND)
    separate_arguments(sign UNIX_COMMAND "${SIGN_COMMAND}")
    must(${sign} ${program})
  endif()
endforeach()

file(GLOB archives ${stage}/lib/*.a ${stage}/lib/*.lib)
foreach(archive IN LISTS archives)
  must(${STRIP} --strip-debug ${archive})
endforeach()

# For other languages.
file(MAKE_DIRECTORY ${stage}/bindings)
foreach(language IN ITEMS pascal csharp)
  set(file_of_pascal Ombrilo.pas)
  set(file_of_csharp Ombrilo.cs)
  execute_process(COMMAND_ERROR_IS_FATAL ANY
    COMMAND ${PYTHON} ${SOURCE}/bindings/declarations/declare.py
      ${SOURCE}/include/ombrilo/ombrilo.h ${language}
    OUTPUT_FILE ${stage}/bindings/${file_of_${language}})
endforeach()

zip(${stage} ${out}/${name}.zip ${name}/)
zip(${debug} ${out}/${name}-debug.zip ${name}-debug/)

# The NuGet package is a zip with a description of its own. A 32-bit build has none: that of the
# 64-bit build contains the 32-bit DLL.
if(ARCHITECTURE STREQUAL "x64")
  set(nuget ${out}/nuget)
  file(COPY ${stage}/include DESTINATION ${nuget}/build/native)
  file(COPY ${stage}/lib/ombrilo.lib DESTINATION ${nuget}/build/native/lib/x64)
  file(COPY ${stage}/bin/ombrilo.dll DESTINATION ${nuget}/runtimes/win-x64/native)
  file(COPY ${stage}/bindings/Ombrilo.cs DESTINATION ${nuget}/contentFiles/cs/any)
  file(COPY ${SOURCE}/LICENSE DESTINATION ${nuget})
  file(COPY_FILE ${stage}/README.txt ${nuget}/README.md)
  if(X86_DLL)
    file(COPY ${X86_DLL} DESTINATION ${nuget}/runtimes/win-x86/native)
    must(${STRIP} --preserve-dates --strip-all ${nuget}/runtimes/win-x86/native/ombrilo.dll)
    cmake_path(REPLACE_FILENAME X86_DLL libombrilo.dll.a OUTPUT_VARIABLE x86_import)
    configure_file(${x86_import} ${nuget}/build/native/lib/x86/ombrilo.lib COPYONLY)
  endif()
  configure_file(${SOURCE}/cmake/nuget/Ombrilo.nuspec.in ${nuget}/Ombrilo.nuspec @ONLY)
  file(COPY ${SOURCE}/cmake/nuget/Ombrilo.targets DESTINATION ${nuget}/build/native)
  file(COPY_FILE ${SOURCE}/cmake/nuget/content_types.xml "${nuget}/[Content_Types].xml")
  file(MAKE_DIRECTORY ${nuget}/_rels)
  file(COPY_FILE ${SOURCE}/cmake/nuget/rels.xml ${nuget}/_rels/.rels)
  zip(${nuget} ${out}/Ombrilo.${VERSION}.nupkg)
endif()

file(GLOB results ${out}/*.zip ${out}/*.nupkg)
foreach(result IN LISTS results)
  file(SIZE ${result} size)
  message("${result}: ${size} bytes")
endforeach()

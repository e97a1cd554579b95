# What `cmake --install` puts where: header, libraries, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

set_target_properties(ombrilo_static PROPERTIES EXPORT_NAME static)
set(devel COMPONENT ombrilo_devel)
install(TARGETS ombrilo_static EXPORT ombriloTargets ${devel})
if(TARGET ombrilo)
  install(TARGETS ombrilo EXPORT ombriloTargets
    RUNTIME COMPONENT ombrilo_library
    LIBRARY COMPONENT ombrilo_library NAMELINK_COMPONENT ombrilo_devel
    ARCHIVE ${devel})
endif()
if(NOT WIN32)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} ${devel})
  install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} ${devel})
endif()
install(FILES include/ombrilo/ombrilo.h include/ombrilo/ombrilo.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ombrilo ${devel})
if(OMBRILO_TOOLS)
  install(TARGETS omb COMPONENT ombrilo_tools)
  if(TARGET ombview)
    install(TARGETS ombview)
  endif()
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ombrilo)
install(EXPORT ombriloTargets NAMESPACE ombrilo:: DESTINATION ${package_dir} ${devel})
configure_package_config_file(cmake/ombriloConfig.cmake.in ombriloConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(ombriloConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ombriloConfig.cmake
  ${PROJECT_BINARY_DIR}/ombriloConfigVersion.cmake DESTINATION ${package_dir} ${devel})

# The way back from the pkg-config file to the prefix, so that the tree can be moved.
file(RELATIVE_PATH PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/ombrilo.pc.in ombrilo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ombrilo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  ${devel})

if(WIN32 AND TARGET ombrilo)
  # What Windows developers look for beside these.
  install(FILES ${PROJECT_BINARY_DIR}/libombrilo.dll.a DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RENAME ombrilo.lib)
  install(FILES src/exports/ombrilo.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY examples DESTINATION .)
  install(FILES LICENSE DESTINATION . RENAME LICENSE.txt)
  install(FILES cmake/windows_readme.txt DESTINATION . RENAME README.txt)

  # cmake --build PRESET --target windows_package
  find_package(Python3 COMPONENTS Interpreter)
  set(OMBRILO_SIGN_COMMAND "" CACHE STRING
    "Run with each DLL and program of the Windows package, to sign it; empty: nothing is signed")
  set(OMBRILO_X86_DLL "" CACHE FILEPATH "The 32-bit ombrilo.dll for the NuGet package")
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(architecture x64)
  else()
    set(architecture x86)
  endif()
  set(package_command ${CMAKE_COMMAND}
    -DBUILD=${PROJECT_BINARY_DIR} -DSOURCE=${PROJECT_SOURCE_DIR} -DVERSION=${PROJECT_VERSION}
    -DARCHITECTURE=${architecture} -DOBJCOPY=${CMAKE_OBJCOPY} -DSTRIP=${CMAKE_STRIP}
    -DPYTHON=${Python3_EXECUTABLE} -DX86_DLL=${OMBRILO_X86_DLL}
    "-DSIGN_COMMAND=${OMBRILO_SIGN_COMMAND}")
  add_custom_target(windows_package VERBATIM
    COMMAND ${package_command} -DOUT=${PROJECT_BINARY_DIR}/package
      -P ${PROJECT_SOURCE_DIR}/cmake/windows_package.cmake)
  add_dependencies(windows_package ombrilo ombrilo_static)
  if(OMBRILO_TOOLS)
    add_dependencies(windows_package omb ombview)
  endif()
endif()

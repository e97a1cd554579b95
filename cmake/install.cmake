# What `cmake --install` puts where: header, libraries, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

set_target_properties(ombrilo_static PROPERTIES EXPORT_NAME static)
install(TARGETS ombrilo_static EXPORT ombriloTargets)
if(TARGET ombrilo)
  install(TARGETS ombrilo EXPORT ombriloTargets)
endif()
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES include/ombrilo/ombrilo.h include/ombrilo/ombrilo.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ombrilo)
if(OMBRILO_TOOLS)
  install(TARGETS omb)
  if(TARGET ombview)
    install(TARGETS ombview)
  endif()
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ombrilo)
install(EXPORT ombriloTargets NAMESPACE ombrilo:: DESTINATION ${package_dir})
configure_package_config_file(cmake/ombriloConfig.cmake.in ombriloConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(ombriloConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ombriloConfig.cmake
  ${PROJECT_BINARY_DIR}/ombriloConfigVersion.cmake DESTINATION ${package_dir})

# The way back from the pkg-config file to the prefix, so that the tree can be moved.
file(RELATIVE_PATH PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/ombrilo.pc.in ombrilo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ombrilo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What CPack makes Debian packages of: cpack -G DEB in a build directory.
set(CPACK_PACKAGE_CONTACT "The Ombrilo authors <maintainers@users.noreply.ombrilo.example>"
  CACHE STRING "Who maintains the packages")
set(CPACK_PACKAGE_NAME ombrilo)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL ombrilo_library ombrilo_devel ombrilo_tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Copyright, changelog and a compressed manual, as Debian has them.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_documents.cmake)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "image processing on packed bitmaps, exact to the bit")
set(what "Operations on images in memory: sizes, tones, filters, morphology,
clean-up of scanned pages, learned palettes. Results are the same bytes on
every processor.")
function(describe component package section description)
  string(TOUPPER ${component} component)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${component}_DESCRIPTION "${what}\n\n${description}" PARENT_SCOPE)
endfunction()
set(soname_package libombrilo${PROJECT_VERSION_MAJOR})
describe(ombrilo_library ${soname_package} libs "This package holds the library.")
describe(ombrilo_devel libombrilo-dev libdevel
  "This package holds headers, the static library and files for CMake and\npkg-config.")
describe(ombrilo_tools ombrilo-tools graphics
  "This package holds the program omb for BMP, PNG, JPEG and TIFF files.")
# The linker's cache learns of the library by dpkg's trigger.
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_OMBRILO_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_OMBRILO_DEVEL_PACKAGE_DEPENDS "${soname_package} (= ${PROJECT_VERSION})")
include(CPack)

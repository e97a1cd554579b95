# An overlay port of the sources that it lies in: vcpkg install ombrilo --overlay-ports=packaging/vcpkg
# Visual C++ does not compile the library; clang-cl and MinGW do (the triplet names them).
cmake_path(ABSOLUTE_PATH CURRENT_PORT_DIR NORMALIZE OUTPUT_VARIABLE port)
cmake_path(APPEND port ../../.. OUTPUT_VARIABLE SOURCE_PATH)
cmake_path(NORMAL_PATH SOURCE_PATH)

vcpkg_cmake_configure(SOURCE_PATH ${SOURCE_PATH}
  OPTIONS -DOMBRILO_TOOLS=OFF -DOMBRILO_TESTS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/ombrilo)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()

file(REMOVE_RECURSE ${CURRENT_PACKAGES_DIR}/debug/include ${CURRENT_PACKAGES_DIR}/debug/share
  ${CURRENT_PACKAGES_DIR}/share/doc)
vcpkg_install_copyright(FILE_LIST ${SOURCE_PATH}/LICENSE)

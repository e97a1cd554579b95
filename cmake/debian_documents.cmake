# Run by CPack when the files of all Debian packages are in folders.
get_filename_component(source ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
file(READ ${source}/LICENSE license)
string(REGEX REPLACE "^MIT License\n\n(Copyright[^\n]*)\n\n" "" license "${license}")
set(owner "${CMAKE_MATCH_1}")
string(REGEX REPLACE "^Copyright \\(c\\) " "" owner "${owner}")
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license "${license}")

# The date of the version, in the form of mail.
file(STRINGS ${source}/CHANGELOG.md entry LIMIT_COUNT 1 REGEX "^## [0-9.]+ - ")
string(REGEX MATCH "[0-9-]+$" date "${entry}")
execute_process(COMMAND date -R -u -d ${date} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)

function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  set(package ${CPACK_DEBIAN_${name}_PACKAGE_NAME})
  set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
  set(documents ${usr}/share/doc/${package})
  file(WRITE ${documents}/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
    "Upstream-Name: Ombrilo\n\nFiles: *\nCopyright: ${owner}\nLicense: Expat\n ${license}\n")
  file(WRITE ${documents}/changelog "${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * Version ${CPACK_PACKAGE_VERSION}.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  compress(${documents}/changelog)
  if(EXISTS ${usr}/share/doc/ombrilo)
    file(GLOB kept ${usr}/share/doc/ombrilo/*)
    file(COPY ${kept} DESTINATION ${documents})
    file(REMOVE_RECURSE ${usr}/share/doc/ombrilo ${documents}/LICENSE)
  endif()
  if(EXISTS ${usr}/share/zsh/site-functions)
    file(MAKE_DIRECTORY ${usr}/share/zsh)
    file(RENAME ${usr}/share/zsh/site-functions ${usr}/share/zsh/vendor-completions)
  endif()
  file(GLOB manuals ${usr}/share/man/man1/*.1)
  foreach(manual IN LISTS manuals)
    compress(${manual})
  endforeach()
endforeach()

# `cpack` creates Debian packages from the installed files: libzn-udf1 with the library, libzn-udf-dev with the files to
# build programs with it, and, with ZN_UDF_DEBIAN, libzn-udf1-dbgsym with the library's debug information. The preset
# `package` configures the build for them.
set(library_package libzn-udf${PROJECT_VERSION_MAJOR})
set(development_package libzn-udf-dev)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libzn-udf)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "utility library for command-line programs")
set(CPACK_PACKAGE_CONTACT "zn_udf maintainers <maintainers@zn-udf.example>")
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)

set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"Strings and tokens, console messages and prompts, child processes, file names
and files, directories, XML, settings and error catalogs, dates and Julian
values, day length and moon phase, IP addresses.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"This package contains the files to build programs with ${library_package}:
headers, CMake package, pkg-config file and manual.")

# Debian's policy requires these files in every package.
if(ZN_UDF_DEBIAN)
  # A public header includes expat.h, so the development package depends on the package that owns it.
  find_program(ZN_UDF_DPKG_QUERY dpkg-query REQUIRED)
  execute_process(COMMAND ${ZN_UDF_DPKG_QUERY} -S ${EXPAT_INCLUDE_DIR}/expat.h
    OUTPUT_VARIABLE owner RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "No package owns ${EXPAT_INCLUDE_DIR}/expat.h")
  endif()
  string(REGEX REPLACE ":.*" "" CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${owner})

  configure_file(cmake/debian/changelog.in changelog.Debian @ONLY)

  # The symbols file lets programs depend on the oldest version that has the symbols they use. The build fails if
  # cmake/debian lists other symbols than the library has.
  find_program(ZN_UDF_DPKG_GENSYMBOLS dpkg-gensymbols REQUIRED)
  set(listed_symbols ${PROJECT_SOURCE_DIR}/cmake/debian/${library_package}.symbols)
  set(symbols ${PROJECT_BINARY_DIR}/control/symbols)
  # dpkg-gensymbols expects to run in a source package.
  file(WRITE ${PROJECT_BINARY_DIR}/control/debian/control
    "Source: ${CPACK_PACKAGE_NAME}\n\nPackage: ${library_package}\nArchitecture: any\n")
  add_custom_command(OUTPUT ${symbols} DEPENDS zn_udf ${listed_symbols}
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/control
    COMMAND ${ZN_UDF_DPKG_GENSYMBOLS} -p${library_package} -v${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}
      -c4 -e$<TARGET_FILE:zn_udf> -I${listed_symbols} -O${symbols}
    VERBATIM)
  add_custom_target(zn_udf_symbols ALL DEPENDS ${symbols})
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${symbols})

  # cpack itself strips the library after it has moved the debug information to a package of its own.
  set(CPACK_STRIP_FILES OFF)
  set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)

  # The packages do not depend on the time: all files get the date of the changelog.
  find_program(ZN_UDF_DPKG_PARSECHANGELOG dpkg-parsechangelog REQUIRED)
  execute_process(COMMAND ${ZN_UDF_DPKG_PARSECHANGELOG} -l ${PROJECT_BINARY_DIR}/changelog.Debian -S Timestamp
    OUTPUT_VARIABLE changelog_time OUTPUT_STRIP_TRAILING_WHITESPACE)
  file(WRITE ${PROJECT_BINARY_DIR}/cpack_environment.cmake
    "if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})\n  set(ENV{SOURCE_DATE_EPOCH} ${changelog_time})\nendif()\n")
  set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/cpack_environment.cmake)
  set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/repack.cmake)

  foreach(package IN ITEMS runtime/${library_package} development/${development_package})
    get_filename_component(component ${package} DIRECTORY)
    get_filename_component(name ${package} NAME)
    set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name})
    install(FILES cmake/debian/copyright DESTINATION ${doc_dir} COMPONENT ${component})
    zn_udf_install_text(${PROJECT_BINARY_DIR}/changelog.Debian changelog.Debian ${doc_dir} ${component})
    configure_file(cmake/debian/lintian-overrides.in lintian/${name} @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/lintian/${name} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
      COMPONENT ${component})
  endforeach()
  if(ZN_UDF_DOCS)
    install(FILES cmake/debian/doc-base DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc-base RENAME ${development_package}
      COMPONENT development)
  endif()
endif()

include(CPack)

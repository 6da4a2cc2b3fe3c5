# The target `docs` builds the API reference with Doxygen and fails on any warning. If Doxygen is missing, only this
# target fails. With ZN_UDF_DOCS, the reference is part of the default build and of the installation.
find_package(Doxygen QUIET)
if(ZN_UDF_DOCS)
  set(all ALL)
endif()

set(ZN_UDF_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
set(doxyfile ${ZN_UDF_DOCS_DIR}/Doxyfile)
set(ZN_UDF_DOCS_SOURCE_DIR ${PROJECT_SOURCE_DIR}/docs)

# Before 1.9.8, Doxygen calls the list of groups modules.
set(ZN_UDF_DOCS_GROUPS topics)
if(DOXYGEN_VERSION VERSION_LESS 1.9.8)
  set(ZN_UDF_DOCS_GROUPS modules)
endif()
set(ZN_UDF_DOCS_FILTER
  "awk -f '${ZN_UDF_DOCS_SOURCE_DIR}/reference_links.awk' '${ZN_UDF_DOCS_SOURCE_DIR}/reference/behaviour.md'")
configure_file(docs/layout.xml.in ${ZN_UDF_DOCS_DIR}/layout.xml @ONLY)
configure_file(docs/Doxyfile.in ${doxyfile} @ONLY)

if(DOXYGEN_FOUND)
  add_custom_target(docs ${all}
    COMMAND ${CMAKE_COMMAND} -E remove_directory ${ZN_UDF_DOCS_DIR}/html
    COMMAND ${DOXYGEN_EXECUTABLE} ${doxyfile}
    COMMAND ${CMAKE_COMMAND} -E echo "The reference is ${ZN_UDF_DOCS_DIR}/html/index.html"
    COMMENT "Building the API reference" VERBATIM)
  if(ZN_UDF_TESTS)
    add_test(NAME docs COMMAND ${PROJECT_SOURCE_DIR}/tests/scripts/docs_test.sh ${DOXYGEN_EXECUTABLE} ${doxyfile}
      ${PROJECT_SOURCE_DIR})
    set_tests_properties(docs PROPERTIES LABELS packaging)
  endif()
else()
  add_custom_target(docs ${all}
    COMMAND ${CMAKE_COMMAND} -E echo
      "The API reference requires Doxygen (Debian package: doxygen). Install it and configure again."
    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
endif()

if(ZN_UDF_DOCS AND ZN_UDF_INSTALL)
  install(DIRECTORY ${ZN_UDF_DOCS_DIR}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endif()

# The target `docs` builds the API reference with Doxygen and fails on any warning. If Doxygen is missing, only this
# target fails. With ZN_UDF_DOCS, the reference is part of the default build and of the installation.
find_package(Doxygen QUIET)
find_file(ZN_UDF_DOXYGEN_AWESOME doxygen-awesome.css PATHS /usr/share/doxygen-awesome-css
  DOC "The style sheet of the API reference, for wide and narrow screens and for dark mode")
if(ZN_UDF_DOCS)
  set(all ALL)
endif()

set(ZN_UDF_DOCS_SOURCE_DIR ${PROJECT_SOURCE_DIR}/docs)
set(ZN_UDF_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
set(ZN_UDF_DOXYFILE ${ZN_UDF_DOCS_DIR}/Doxyfile)
set(ZN_UDF_DOCS_SETTINGS "")  # Doxygen's settings that depend on what is installed

# Without this style sheet, the reference has Doxygen's own style.
if(ZN_UDF_DOXYGEN_AWESOME)
  string(APPEND ZN_UDF_DOCS_SETTINGS "HTML_EXTRA_STYLESHEET = \"${ZN_UDF_DOXYGEN_AWESOME}\"\n")
  if(NOT DOXYGEN_VERSION VERSION_LESS 1.9.5)
    # The dark colours are those of the style sheet.
    string(APPEND ZN_UDF_DOCS_SETTINGS "HTML_COLORSTYLE = LIGHT\n")
  endif()
endif()

# Before 1.9.8, Doxygen calls the list of groups modules.
set(ZN_UDF_DOCS_GROUPS topics)
if(DOXYGEN_VERSION VERSION_LESS 1.9.8)
  set(ZN_UDF_DOCS_GROUPS modules)
endif()
set(ZN_UDF_DOCS_FILTER
  "awk -f '${ZN_UDF_DOCS_SOURCE_DIR}/reference_links.awk' '${ZN_UDF_DOCS_SOURCE_DIR}/reference/behaviour.md'")
configure_file(docs/layout.xml.in ${ZN_UDF_DOCS_DIR}/layout.xml @ONLY)
configure_file(docs/Doxyfile.in ${ZN_UDF_DOXYFILE} @ONLY)

if(DOXYGEN_FOUND)
  add_custom_target(docs ${all}
    COMMAND ${CMAKE_COMMAND} -E remove_directory ${ZN_UDF_DOCS_DIR}/html
    COMMAND ${DOXYGEN_EXECUTABLE} ${ZN_UDF_DOXYFILE}
    COMMAND ${CMAKE_COMMAND} -E echo "The reference is ${ZN_UDF_DOCS_DIR}/html/index.html"
    COMMENT "Building the API reference" VERBATIM)
else()
  add_custom_target(docs ${all}
    COMMAND ${CMAKE_COMMAND} -E echo
      "The API reference requires Doxygen (Debian package: doxygen). Install it and configure again."
    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
endif()

if(ZN_UDF_DOCS AND ZN_UDF_INSTALL)
  install(DIRECTORY ${ZN_UDF_DOCS_DIR}/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endif()

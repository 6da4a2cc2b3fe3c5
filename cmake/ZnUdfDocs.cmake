# The target `docs` builds the API reference with Doxygen and fails on any warning. If Doxygen is missing, only this
# target fails. With ZN_UDF_DOCS, the reference is part of the default build and of the installation.
find_package(Doxygen QUIET)
find_package(Python3 QUIET COMPONENTS Interpreter)
find_file(ZN_UDF_LUNR lunr.min.js PATHS /usr/share/javascript/lunr DOC "lunr.js, which searches the API reference")
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

# A form in the header of each page replaces Doxygen's search, which finds names only.
if(DOXYGEN_FOUND AND Python3_FOUND AND ZN_UDF_LUNR)
  set(ZN_UDF_SEARCH_INDEX ${Python3_EXECUTABLE} ${ZN_UDF_DOCS_SOURCE_DIR}/reference_search.py)
  set(search COMMAND ${ZN_UDF_SEARCH_INDEX} ${ZN_UDF_DOCS_DIR}/html)
  file(MAKE_DIRECTORY ${ZN_UDF_DOCS_DIR})
  execute_process(COMMAND ${DOXYGEN_EXECUTABLE} -w html header.html footer.html doxygen.css
    WORKING_DIRECTORY ${ZN_UDF_DOCS_DIR})
  file(READ ${ZN_UDF_DOCS_DIR}/header.html header)
  file(READ ${ZN_UDF_DOCS_SOURCE_DIR}/reference_search.html form)
  string(REPLACE "<!--END TITLEAREA-->" "${form}<!--END TITLEAREA-->" header "${header}")
  file(WRITE ${ZN_UDF_DOCS_DIR}/header.html "${header}")
  string(APPEND ZN_UDF_DOCS_SETTINGS "SEARCHENGINE = NO\nHTML_HEADER = \"${ZN_UDF_DOCS_DIR}/header.html\"\n"
    "HTML_EXTRA_FILES = \"${ZN_UDF_LUNR}\" \"${ZN_UDF_DOCS_SOURCE_DIR}/reference_search.js\"\n")
else()
  set(search COMMAND ${CMAKE_COMMAND} -E echo
    "The search finds names only, without lunr.js and Python (Debian packages: libjs-lunr, python3)")
  string(APPEND ZN_UDF_DOCS_SETTINGS "EXCLUDE = \"${ZN_UDF_DOCS_SOURCE_DIR}/reference/search.md\"\n")
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
    ${search}
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

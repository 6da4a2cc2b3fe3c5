# Rules for `cmake --install` and for the packages by which other projects find the library. The component `runtime`
# holds the shared library, `development` the files to build programs with it. `examples` is installed only on request.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(NOT ZN_UDF_IS_TOP_LEVEL)
  # The inherited directory is that of the project that contains this one.
  set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/zn_udf)
endif()
set(ZN_UDF_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zn_udf)
set(ZN_UDF_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zn_udf)
target_include_directories(zn_udf PUBLIC $<INSTALL_INTERFACE:${ZN_UDF_INCLUDE_DIR}>)

install(TARGETS zn_udf EXPORT zn_udf
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${ZN_UDF_INCLUDE_DIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

install(EXPORT zn_udf NAMESPACE zn_udf:: FILE zn_udf-targets.cmake DESTINATION ${ZN_UDF_PACKAGE_DIR}
  COMPONENT development)
configure_package_config_file(cmake/zn_udf-config.cmake.in zn_udf-config.cmake
  INSTALL_DESTINATION ${ZN_UDF_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(zn_udf-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zn_udf-config.cmake ${PROJECT_BINARY_DIR}/zn_udf-config-version.cmake
  DESTINATION ${ZN_UDF_PACKAGE_DIR} COMPONENT development)

# pkg-config derives the prefix from the location of its file, so that the installed tree is relocatable.
file(RELATIVE_PATH ZN_UDF_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH ZN_UDF_PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH ZN_UDF_PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/zn_udf)
configure_file(cmake/zn_udf.pc.in zn_udf.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zn_udf.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Installs `file` as `name`, compressed if Debian's policy requires it.
function(zn_udf_install_text file name directory component)
  if(ZN_UDF_DEBIAN)
    find_program(ZN_UDF_GZIP gzip REQUIRED)
    set(compressed ${PROJECT_BINARY_DIR}/compressed/${name}.gz)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/compressed)
    execute_process(COMMAND ${ZN_UDF_GZIP} -9nc ${file} OUTPUT_FILE ${compressed})
    install(FILES ${compressed} DESTINATION ${directory} COMPONENT ${component})
  else()
    install(FILES ${file} DESTINATION ${directory} COMPONENT ${component} RENAME ${name})
  endif()
endfunction()

zn_udf_install_text(${PROJECT_SOURCE_DIR}/docs/man/zn_udf.3 zn_udf.3 ${CMAKE_INSTALL_MANDIR}/man3 development)
zn_udf_install_text(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR} development)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)

# `cmake --build BUILD --target uninstall`
if(ZN_UDF_IS_TOP_LEVEL)
  set(ZN_UDF_OWN_DIRECTORIES ${ZN_UDF_INCLUDE_DIR} ${ZN_UDF_PACKAGE_DIR} ${CMAKE_INSTALL_DOCDIR})
  configure_file(cmake/zn_udf-uninstall.cmake.in zn_udf-uninstall.cmake @ONLY)
  add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_BINARY_DIR}/zn_udf-uninstall.cmake
    COMMENT "Removing the installed files" VERBATIM)
endif()

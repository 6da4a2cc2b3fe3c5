# Creates a locale with an 8-bit character set, a decimal comma and digit grouping in the build tree, independent of the
# installed locales. Sets ZN_UDF_TEST_LOCALE_ENVIRONMENT to the environment in which test programs use it.
find_program(LOCALEDEF localedef)
set(ZN_UDF_TEST_LOCALE de_DE.ISO-8859-1)
set(ZN_UDF_TEST_LOCALE_DIR ${PROJECT_BINARY_DIR}/locale)
if(NOT LOCALEDEF)
  message(FATAL_ERROR "The tests require localedef and the locale sources (Debian package: locales)")
endif()
if(NOT EXISTS ${ZN_UDF_TEST_LOCALE_DIR}/${ZN_UDF_TEST_LOCALE}/LC_NUMERIC)
  file(MAKE_DIRECTORY ${ZN_UDF_TEST_LOCALE_DIR})
  execute_process(
    COMMAND ${LOCALEDEF} --no-archive -i de_DE -f ISO-8859-1 ${ZN_UDF_TEST_LOCALE_DIR}/${ZN_UDF_TEST_LOCALE}
    RESULT_VARIABLE ZN_UDF_LOCALEDEF_RESULT ERROR_VARIABLE ZN_UDF_LOCALEDEF_ERROR)
  if(NOT ZN_UDF_LOCALEDEF_RESULT EQUAL 0)
    message(FATAL_ERROR
      "localedef failed to create the tests' locale (Debian package: locales): ${ZN_UDF_LOCALEDEF_ERROR}")
  endif()
endif()
set(ZN_UDF_TEST_LOCALE_ENVIRONMENT "LOCPATH=${ZN_UDF_TEST_LOCALE_DIR};ZN_UDF_TEST_LOCALE=${ZN_UDF_TEST_LOCALE}")

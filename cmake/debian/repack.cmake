# Runs when cpack has created the packages.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/repack.sh ${package} OUTPUT_QUIET RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "cmake/debian/repack.sh failed for ${package}")
  endif()
endforeach()

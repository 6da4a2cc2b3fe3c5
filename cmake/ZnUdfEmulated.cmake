# In a build for another machine, test scripts run programs through an emulator.
if(CMAKE_CROSSCOMPILING AND CMAKE_CROSSCOMPILING_EMULATOR)
  set(ZN_UDF_IS_EMULATED ON)
else()
  set(ZN_UDF_IS_EMULATED OFF)
endif()

# Sets `result` to a directory in which scripts can run the given targets by the names of their files.
function(zn_udf_runnable result)
  list(GET ARGN 0 first)
  set(directory $<TARGET_FILE_DIR:${first}>)
  if(ZN_UDF_IS_EMULATED)
    set(directory ${PROJECT_BINARY_DIR}/emulated/$<CONFIG>)
    foreach(target IN LISTS ARGN)
      file(GENERATE OUTPUT ${directory}/$<TARGET_FILE_NAME:${target}>
        CONTENT "#!/bin/sh\nexec ${CMAKE_CROSSCOMPILING_EMULATOR} '$<TARGET_FILE:${target}>' \"$@\"\n"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    endforeach()
  endif()
  set(${result} ${directory} PARENT_SCOPE)
endfunction()

# Records that this build lacks a test, with the reason. `./check portable` prints the record.
set(ZN_UDF_LEFT_OUT ${PROJECT_BINARY_DIR}/left_out.txt)
file(WRITE ${ZN_UDF_LEFT_OUT} "")
function(zn_udf_leave_out name reason)
  message(STATUS "Left out: test ${name}, ${reason}")
  file(APPEND ${ZN_UDF_LEFT_OUT} "${name}: ${reason}\n")
endfunction()

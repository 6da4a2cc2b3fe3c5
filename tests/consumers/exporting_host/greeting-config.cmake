include(CMakeFindDependencyMacro)
find_dependency(zn_udf 1.1)
include(${CMAKE_CURRENT_LIST_DIR}/greeting-targets.cmake)

# Compiler warnings for the project's own code. Targets link them privately, so hosts do not inherit them.
add_library(zn_udf_warnings INTERFACE)
target_compile_options(zn_udf_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${ZN_UDF_WERROR}>:-Werror>)

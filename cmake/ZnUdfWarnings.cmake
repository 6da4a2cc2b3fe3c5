# The warnings that the project's own code is compiled with. Linked privately, so no host inherits them.
add_library(zn_udf_warnings INTERFACE)
target_compile_options(zn_udf_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${ZN_UDF_WERROR}>:-Werror>)

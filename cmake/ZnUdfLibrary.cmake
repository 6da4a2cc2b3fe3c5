# How the shared library is named, compiled and linked.
include(CheckCXXCompilerFlag)

set_target_properties(zn_udf PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  CXX_EXTENSIONS OFF
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON
  # A host on macOS carries the library in a `libs` directory beside the directory of its executable.
  INSTALL_NAME_DIR "@executable_path/../libs")

target_compile_options(zn_udf PRIVATE
  # The sky's formulas are fixed to the last bit: no fused multiply-add where the formula has two roundings.
  -ffp-contract=off
  # Assertions, and debug information, name files relative to the source tree, wherever it lies.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_compile_options(zn_udf PRIVATE $<IF:$<BOOL:${ZN_UDF_ASSERTIONS}>,-UNDEBUG,-DNDEBUG>)

if(ZN_UDF_CONVERSION_CHECKS)
  set(conversion_checks -fsanitize=implicit-conversion -fno-sanitize-recover=implicit-conversion
    -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer_ignore.txt)
  target_compile_options(zn_udf PRIVATE ${conversion_checks})
  target_link_options(zn_udf PRIVATE ${conversion_checks})
endif()

# Debian's flags for packages. Fortified functions need an optimised build.
if(ZN_UDF_HARDENING)
  set(optimised $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
  target_compile_options(zn_udf PRIVATE -fstack-protector-strong -Wformat -Werror=format-security
    $<${optimised}:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  if(NOT APPLE)
    target_link_options(zn_udf PRIVATE LINKER:-z,relro LINKER:-z,now)
  endif()
endif()

# Calls within the library need no detour through the dynamic linker.
check_cxx_compiler_flag(-fno-semantic-interposition ZN_UDF_HAS_NO_SEMANTIC_INTERPOSITION)
if(ZN_UDF_HAS_NO_SEMANTIC_INTERPOSITION)
  target_compile_options(zn_udf PRIVATE -fno-semantic-interposition)
endif()

# The standard library's templates have default visibility whatever the preset says. A list of exports keeps them
# to ourselves, and with them the GNU-unique symbols of <regex>, which would pin the library in memory after dlclose.
if(APPLE)
  set(ZN_UDF_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/zn_udf.exported)
  target_link_options(zn_udf PRIVATE LINKER:-exported_symbols_list,${ZN_UDF_EXPORTS})
else()
  set(ZN_UDF_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/zn_udf.map)
  target_link_options(zn_udf PRIVATE LINKER:--version-script=${ZN_UDF_EXPORTS})
endif()
set_target_properties(zn_udf PROPERTIES LINK_DEPENDS ${ZN_UDF_EXPORTS})

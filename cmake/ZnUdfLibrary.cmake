# Sets the name, the compiler options and the linker options of the shared library.
include(CheckCXXCompilerFlag)

if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  message(FATAL_ERROR "zn_udf is always a shared library, but BUILD_SHARED_LIBS is off. A project that contains zn_udf "
    "writes set(BUILD_SHARED_LIBS ON) before add_subdirectory, and unset(BUILD_SHARED_LIBS) after it.")
endif()

set_target_properties(zn_udf PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  CXX_EXTENSIONS OFF
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON
  # A host on macOS ships the library in a directory `libs` next to the directory of its executable.
  INSTALL_NAME_DIR "@executable_path/../libs")

target_compile_options(zn_udf PRIVATE
  # The results of the astronomical formulas are fixed to the last bit. A fused multiply-add would round only once.
  -ffp-contract=off
  # Assertions and debug information name files relative to the source tree, and no directory of this machine. The last
  # option that matches a name applies, and the build tree may be inside the source tree.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
  -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
target_compile_options(zn_udf PRIVATE $<IF:$<BOOL:${ZN_UDF_ASSERTIONS}>,-UNDEBUG,-DNDEBUG>)

if(ZN_UDF_CHECK_DEFINITIONS)
  target_compile_definitions(zn_udf PRIVATE ZN_UDF_CHECK_DEFINITIONS)
  # The comparison is not what sanitizers examine, and takes most of the time without this.
  set_source_files_properties(src/udf/internal/definitions.cpp PROPERTIES COMPILE_OPTIONS "-O2;-fno-sanitize=all")
endif()
if(ZN_UDF_COVERAGE)
  # With its own execl, g++ ends the counting in a process from which a child by vfork has borrowed the memory.
  set_source_files_properties(src/udf/internal/child.cpp PROPERTIES COMPILE_OPTIONS -fno-builtin-execl)
endif()
if(ZN_UDF_DEBUG_INFORMATION)
  target_compile_options(zn_udf PRIVATE -g)
endif()

if(ZN_UDF_CONVERSION_CHECKS)
  set(conversion_checks -fsanitize=implicit-conversion -fno-sanitize-recover=implicit-conversion
    -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer_ignore.txt)
  target_compile_options(zn_udf PRIVATE ${conversion_checks})
  target_link_options(zn_udf PRIVATE ${conversion_checks})
endif()

# Debian's hardening flags. Fortified functions require an optimised build.
if(ZN_UDF_HARDENING)
  set(optimised $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
  target_compile_options(zn_udf PRIVATE -fstack-protector-strong -Wformat -Werror=format-security
    $<${optimised}:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  if(NOT APPLE)
    target_link_options(zn_udf PRIVATE LINKER:-z,relro LINKER:-z,now)
  endif()
endif()

# Calls within the library do not go through the dynamic linker, which would have to look up their symbols whenever a
# program starts.
check_cxx_compiler_flag(-fno-semantic-interposition ZN_UDF_HAS_NO_SEMANTIC_INTERPOSITION)
if(ZN_UDF_HAS_NO_SEMANTIC_INTERPOSITION)
  target_compile_options(zn_udf PRIVATE -fno-semantic-interposition)
endif()
if(NOT APPLE)
  target_link_options(zn_udf PRIVATE LINKER:-Bsymbolic-functions)
endif()

# Templates of the standard library have default visibility despite the visibility preset. The list of exports hides
# them. Among them are the GNU-unique symbols of <regex>, which would keep the library in memory after dlclose.
if(APPLE)
  set(ZN_UDF_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/zn_udf.exported)
  target_link_options(zn_udf PRIVATE LINKER:-exported_symbols_list,${ZN_UDF_EXPORTS})
else()
  set(ZN_UDF_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/zn_udf.map)
  target_link_options(zn_udf PRIVATE LINKER:--version-script=${ZN_UDF_EXPORTS})
endif()
set_target_properties(zn_udf PROPERTIES LINK_DEPENDS ${ZN_UDF_EXPORTS})

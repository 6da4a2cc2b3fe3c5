# Compiler options that make results the same on every machine. Targets of the project link them privately, so hosts do
# not inherit them. The public headers do not depend on them.
include(CheckCXXSourceCompiles)
add_library(zn_udf_machine INTERFACE)

# Ranges of bytes in a pattern, such as "[a-\xE4]", follow the order of char, which is unsigned on ARM and other
# machines.
target_compile_options(zn_udf_machine INTERFACE -fsigned-char)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # These enable files of more than 2 GiB, inode numbers of more than 32 bits, and dates after 2038.
  target_compile_definitions(zn_udf_machine INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

  # The older of the two floating-point units of 32-bit x86 rounds intermediate results to 64 bits instead of 53.
  check_cxx_source_compiles("#ifndef __i386__\n#error another machine\n#endif\nint main() {}" ZN_UDF_IS_32_BIT_X86)
  if(ZN_UDF_IS_32_BIT_X86)
    target_compile_options(zn_udf_machine INTERFACE -msse2 -mfpmath=sse)
  endif()
endif()

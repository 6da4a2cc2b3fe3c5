# What the project's own code is compiled with to give the same answers on every machine. Linked privately, so no host
# inherits it: nothing in the public headers depends on it.
include(CheckCXXSourceCompiles)
add_library(zn_udf_machine INTERFACE)

# Ranges of bytes in a pattern, "[a-\xE4]", are in the order of char, which ARM and others have unsigned.
target_compile_options(zn_udf_machine INTERFACE -fsigned-char)

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # Files of more than 2 GiB, inode numbers of more than 32 bits, dates after 2038.
  target_compile_definitions(zn_udf_machine INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

  # The older of the two units of 32-bit x86 rounds intermediate results to 64 bits in place of 53.
  check_cxx_source_compiles("#ifndef __i386__\n#error another machine\n#endif\nint main() {}" ZN_UDF_IS_32_BIT_X86)
  if(ZN_UDF_IS_32_BIT_X86)
    target_compile_options(zn_udf_machine INTERFACE -msse2 -mfpmath=sse)
  endif()
endif()

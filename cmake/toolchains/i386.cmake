# Builds for 32-bit x86 with Debian's cross compiler and multiarch packages.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig)

# Most kernels for x86-64 run 32-bit programs without an emulator.
execute_process(COMMAND /lib/ld-linux.so.2 --version OUTPUT_QUIET ERROR_QUIET RESULT_VARIABLE cannot_run)
if(cannot_run)
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
endif()

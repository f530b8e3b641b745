# The target: MIPS o32, big-endian, Linux, built with Debian's cross compiler and run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR mips)
set(CMAKE_C_COMPILER mips-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER mips-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-mips-static;-L;/usr/mips-linux-gnu")
set(CMAKE_FIND_ROOT_PATH /usr/mips-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Header-only libraries ({fmt}, nlohmann-json, toml++) come from the build machine.
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)

# What the 32-bit ARM hard-float cross builds share: Debian's cross compiler
# and libraries, tests under qemu-arm.  The including toolchain file sets
#   UI32_ARM_FLAGS   code generation options (architecture, FPU, ABI)
#   UI32_QEMU_CPU    the CPU qemu-arm emulates for the tests
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_FLAGS_INIT "${UI32_ARM_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${UI32_ARM_FLAGS}")
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -cpu ${UI32_QEMU_CPU} -L /usr/arm-linux-gnueabihf)

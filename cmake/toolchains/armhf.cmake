# 32-bit ARM hard float as Debian's armhf defines it: ARMv7-A, VFPv3 with 16
# double registers, Thumb-2, no NEON.  The tests run on an emulated CPU that
# has exactly that floating-point unit and no NEON (qemu's Cortex-R5F: the
# same application instruction set; libc then also takes its non-NEON string
# functions), so an instruction the baseline must not use faults.
set(UI32_ARM_FLAGS "-march=armv7-a -mfpu=vfpv3-d16 -mthumb -mfloat-abi=hard")
set(UI32_QEMU_CPU cortex-r5f)
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake)

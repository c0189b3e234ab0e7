# 32-bit ARM hard float for terminals with NEON: ARMv7-A with the NEON unit
# (and VFPv3 with 32 double registers), same ABI as armhf.  The compiler
# defines __ARM_NEON, which selects NEON row functions where the library has
# them.  Tests run on an emulated Cortex-A15.
set(UI32_ARM_FLAGS "-march=armv7-a -mfpu=neon -mthumb -mfloat-abi=hard")
set(UI32_QEMU_CPU cortex-a15)
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake)

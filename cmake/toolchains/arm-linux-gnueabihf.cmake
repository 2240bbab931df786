# SPDX-License-Identifier: MIT
# Cross build for an ARMv7 hard-float controller with Debian's arm-linux-gnueabihf toolchain
# (package g++-arm-linux-gnueabihf; qemu-user runs the results on this machine).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# The controller's floor: ARMv7-A with a VFPv3-D16 unit, floating-point arguments in VFP
# registers. Stated here so that a toolchain with other defaults still builds for it.
# -Wno-psabi: GCC notes each argument of a 64-bit-aligned type whose passing changed in GCC 7.1;
# that matters only when linking code from older compilers, and the host contract passes none.
set(CMAKE_C_FLAGS_INIT "-march=armv7-a+fp -mfloat-abi=hard")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a+fp -mfloat-abi=hard -Wno-psabi")

# No find root path, as in Debian's own cross builds: the compiler knows where the target's C and
# C++ runtimes are, target libraries of multiarch packages are found in lib/arm-linux-gnueabihf
# before anything else, and header-only packages (/usr/include, /usr/share/cmake) serve both
# architectures.

# Test programs, and GoogleTest's discovery of their tests, run under user-mode emulation with the
# target's dynamic loader and C++ runtime from the cross toolchain's folder.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;/usr/${CMAKE_LIBRARY_ARCHITECTURE})

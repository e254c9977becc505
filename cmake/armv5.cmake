# The oldest 32-bit ARM: no atomic instructions, no floating point. Nothing runs; the plug-in is made
# and looked at.
set(triple arm-linux-gnueabi)
set(flags "-march=armv5te -mfloat-abi=soft")
include(${CMAKE_CURRENT_LIST_DIR}/clang.cmake)

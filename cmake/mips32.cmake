# 32-bit MIPS. Nothing runs; the plug-in is made and looked at.
set(triple mipsel-linux-gnu)
set(flags "-march=mips32")
include(${CMAKE_CURRENT_LIST_DIR}/clang.cmake)

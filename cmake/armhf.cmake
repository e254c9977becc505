# 32-bit ARM with floating point. SONOLET_SYSROOT is a Debian of that processor, for host and service;
# without one the plug-in and its unit tests are made.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# All of it is made by one compiler: how GCC 6 passed arguments is nobody's concern.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONOLET_SYSROOT)
if(SONOLET_SYSROOT)
    set(CMAKE_SYSROOT ${SONOLET_SYSROOT})
    set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
    # GStreamer looks for its plug-ins with a system call whose paths the emulator leaves as they are,
    # and would run a program of the other machine to look into them.
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${SONOLET_SYSROOT} -E GST_REGISTRY_FORK=no
        -E GST_REGISTRY=${CMAKE_BINARY_DIR}/gstreamer-registry
        -E GST_PLUGIN_SYSTEM_PATH=${SONOLET_SYSROOT}/usr/lib/arm-linux-gnueabihf/gstreamer-1.0)
    set(CMAKE_FIND_ROOT_PATH ${SONOLET_SYSROOT})
    set(ENV{PKG_CONFIG_SYSROOT_DIR} ${SONOLET_SYSROOT})
    set(ENV{PKG_CONFIG_LIBDIR}
        ${SONOLET_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${SONOLET_SYSROOT}/usr/share/pkgconfig)
else()
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf)
    set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

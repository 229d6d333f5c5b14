# The television's processor: 32-bit ARM, little-endian, hardware floating point. Debian's cross compiler builds, and
# user-mode emulation runs the programs. tv-arm-sysroot.sh fills a folder with the libraries that the compiler lacks.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

get_filename_component(DTV_ARM_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/tv-arm-sysroot ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${DTV_ARM_SYSROOT} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)  # packages of headers alone are the host's
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_CXX_FLAGS_INIT "-isystem ${DTV_ARM_SYSROOT}/usr/include")
set(arm_libraries ${DTV_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf ${DTV_ARM_SYSROOT}/lib/arm-linux-gnueabihf)
foreach(folder ${arm_libraries})
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,-rpath-link,${folder}")
  string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,-rpath-link,${folder}")
endforeach()

list(JOIN arm_libraries ":" arm_library_path)
set(CMAKE_CROSSCOMPILING_EMULATOR
  qemu-arm;-L;/usr/arm-linux-gnueabihf;-E;LD_LIBRARY_PATH=${arm_library_path}:/usr/arm-linux-gnueabihf/lib
  -E;GCONV_PATH=${DTV_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf/gconv)

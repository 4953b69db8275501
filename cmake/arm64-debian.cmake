# 64-bit Arm with clang, lld and libc++, against Debian's arm64 packages that
# cmake/arm64-sysroot.sh has unpacked. Programs run under qemu-user.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
if(NOT EXISTS ${CMAKE_SYSROOT}/.complete)
    message(FATAL_ERROR "no arm64 libraries; run: cmake/arm64-sysroot.sh build/arm64-sysroot")
endif()

set(CMAKE_C_COMPILER clang)  # GoogleTest asks for one
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
# The sysroot's own C++ headers, also where the desk has libc++ installed as well.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-nostdinc++>)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_SYSROOT}/usr/lib/llvm-14/include/c++/v1)
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -stdlib=libc++")
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind IN ITEMS INCLUDE LIBRARY PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${CMAKE_SYSROOT})

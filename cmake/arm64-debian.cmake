# 64-bit Arm as today's phones are built: LLVM 19 with lld and libc++, against Debian's arm64
# packages that cmake/unpack-libraries.sh has unpacked. Programs run under qemu-user.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
if(NOT EXISTS ${CMAKE_SYSROOT}/.complete)
    message(FATAL_ERROR "no arm64 libraries; run: cmake/unpack-libraries.sh arm64 build/arm64-sysroot")
endif()

set(CMAKE_C_COMPILER clang-19)  # GoogleTest asks for one
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
# The sysroot's own C++ headers, also where the desk has libc++ installed as well.
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_SYSROOT}/usr/lib/llvm-19/include/c++/v1)

# Of the flags that the platform's build gives to every module, those that can change the code.
string(JOIN " " code_flags
    -fno-strict-aliasing -ffp-contract=off -ffunction-sections -fdata-sections
    -fno-short-enums -funwind-tables -fstack-protector-strong -faddrsig
    -ftrivial-auto-var-init=zero -D_FORTIFY_SOURCE=3)
# And those that can refuse it.
set(errors address-of-temporary bool-operation dangling date-time format-insufficient-args
    format-security fortify-source int-conversion int-in-bool-context int-to-pointer-cast
    multichar non-virtual-dtor null-dereference pragma-pack return-type sequence-point
    sizeof-array-div sizeof-pointer-memaccess string-plus-int unreachable-code-loop-increment
    xor-used-as-pow)
list(TRANSFORM errors PREPEND -Werror=)
list(JOIN errors " " errors)
set(CMAKE_C_FLAGS_INIT "${code_flags}")
string(JOIN " " CMAKE_CXX_FLAGS_INIT -nostdinc++ ${code_flags} -fvisibility-inlines-hidden
    -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS ${errors})
# Its links as well; --no-undefined is the library's own, for tests take names from programs.
foreach(kind IN ITEMS EXE SHARED MODULE)
    string(JOIN " " CMAKE_${kind}_LINKER_FLAGS_INIT --ld-path=ld.lld-19 -stdlib=libc++
        -Wl,--fatal-warnings -Wl,--no-undefined-version
        -Wl,-z,noexecstack,-z,relro,-z,now -Wl,--icf=safe
        -Wl,-z,separate-code,-z,separate-loadable-segments -Wl,-z,max-page-size=16384
        -Wl,--build-id=md5)
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind IN ITEMS INCLUDE LIBRARY PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${CMAKE_SYSROOT})

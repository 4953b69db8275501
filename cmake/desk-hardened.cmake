# The desk with LLVM 19 and its libc++, which checks how it is used. cmake/unpack-libraries.sh
# has unpacked it, since Debian installs one version of libc++ at a time; programs need its
# folder in LD_LIBRARY_PATH.

set(libcxx ${CMAKE_CURRENT_LIST_DIR}/../build/amd64-libcxx)
if(NOT EXISTS ${libcxx}/.complete)
    message(FATAL_ERROR "no libc++ 19; run: cmake/unpack-libraries.sh amd64 build/amd64-libcxx")
endif()

set(CMAKE_C_COMPILER clang-19)  # GoogleTest asks for one
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -D_LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_EXTENSIVE")
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${libcxx}/usr/lib/llvm-19/include/c++/v1)
foreach(kind IN ITEMS EXE SHARED MODULE)
    string(JOIN " " CMAKE_${kind}_LINKER_FLAGS_INIT --ld-path=ld.lld-19 -stdlib=libc++
        -L${libcxx}/usr/lib/llvm-19/lib)
endforeach()

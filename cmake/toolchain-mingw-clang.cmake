# Cross build for 64-bit Windows: clang and lld with mingw-w64's headers and libstdc++.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(quill_target_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET ${quill_target_triple})
set(CMAKE_CXX_COMPILER_TARGET ${quill_target_triple})
set(CMAKE_RC_COMPILER ${quill_target_triple}-windres)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)

# The runtime is linked statically, so that shipped binaries import only system DLLs.
set(quill_link_flags "-fuse-ld=lld-19 -static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${quill_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${quill_link_flags}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${quill_link_flags}")

# Use programs of the build machine, but never its headers or libraries.
set(CMAKE_FIND_ROOT_PATH /usr/${quill_target_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The same target with g++, for its warnings. The shipped binaries are built with clang.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(quill_target_triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${quill_target_triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${quill_target_triple}-g++-posix)
set(CMAKE_RC_COMPILER ${quill_target_triple}-windres)

set(quill_link_flags "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${quill_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${quill_link_flags}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${quill_link_flags}")

set(CMAKE_FIND_ROOT_PATH /usr/${quill_target_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

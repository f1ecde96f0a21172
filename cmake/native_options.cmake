# Options of the native build: plain code compiled for the build machine, with sanitizers, fuzzers and coverage.
# wchar_t has 16 bits as on Windows (-fshort-wchar), so the standard library's templates are instantiated here
# instead of taken from its binary, and tests/native/wide_runtime.cpp defines the C library's wide functions.
option(QUILL_SANITIZE "AddressSanitizer, UndefinedBehaviorSanitizer and instrumentation for fuzzing" OFF)
option(QUILL_COVERAGE "Instrument for line and branch coverage" OFF)

add_library(native_options INTERFACE)
add_library(quill::options ALIAS native_options)
target_compile_features(native_options INTERFACE cxx_std_20)
target_compile_definitions(native_options INTERFACE
    UNICODE _UNICODE _GLIBCXX_EXTERN_TEMPLATE=0 _GLIBCXX_ASSERTIONS)
target_compile_options(native_options INTERFACE
    -fshort-wchar -g
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow -Wconversion -Wcast-qual -Wundef -Wextra-semi -Wimplicit-fallthrough -Wformat=2 -Wold-style-cast)
target_include_directories(native_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/atl)
target_include_directories(native_options SYSTEM INTERFACE ${PROJECT_SOURCE_DIR}/tests/native/include)
if(QUILL_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all)
    target_compile_options(native_options INTERFACE ${sanitizers} -fsanitize=fuzzer-no-link -fno-omit-frame-pointer)
    target_link_options(native_options INTERFACE ${sanitizers})
endif()
if(QUILL_COVERAGE)
    target_compile_options(native_options INTERFACE -fprofile-instr-generate -fcoverage-mapping -O0)
    target_link_options(native_options INTERFACE -fprofile-instr-generate)
endif()

# spdlog and fmt are header-only, as in the cross build.
add_library(native_spdlog INTERFACE)
add_library(quill::dep::spdlog ALIAS native_spdlog)
target_compile_definitions(native_spdlog INTERFACE FMT_HEADER_ONLY SPDLOG_FMT_EXTERNAL)

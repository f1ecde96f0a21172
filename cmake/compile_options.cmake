# ON for test code, which is compiled without optimisation: compiling the tests takes most of the build time.
define_property(TARGET PROPERTY QUILL_IS_TEST_CODE INITIALIZE_FROM_VARIABLE DEFAULT_QUILL_IS_TEST_CODE)

# ON for images that link quill::runtime_threads instead of the toolchain's thread library.
define_property(TARGET PROPERTY QUILL_WITHOUT_THREAD_LIBRARY)

# quill_options: compile and link options of every target in this project.
add_library(quill_options INTERFACE)
add_library(quill::options ALIAS quill_options)

target_compile_features(quill_options INTERFACE cxx_std_20)
target_compile_definitions(quill_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX STRICT
    WINVER=0x0A00 _WIN32_WINNT=0x0A00 _WIN32_IE=0x0A00 NTDDI_VERSION=0x0A000000
    _GLIBCXX_ASSERTIONS)
# COM declarations require -fms-extensions (__uuidof, __declspec, anonymous structures), each use of which would
# cause a language-extension warning.
target_compile_options(quill_options INTERFACE
    -fms-extensions
    -Wall -Wextra -Wpedantic -Werror
    $<$<CXX_COMPILER_ID:Clang>:-Wno-language-extension-token>
    # mingw-w64 declares STDMETHOD as nothrow, but not STDMETHODIMP.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-missing-exception-spec>
    # GCC knows neither clang's pragmas nor the uuid attribute, and reports false uses of uninitialised strings in
    # std::optional.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-unknown-pragmas>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-attributes>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-maybe-uninitialized>
    -Wshadow -Wconversion -Wcast-qual -Wundef -Wextra-semi -Wimplicit-fallthrough -Wformat=2
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
    -fstack-protector-strong -ffunction-sections -fdata-sections
    $<IF:$<BOOL:$<TARGET_PROPERTY:QUILL_IS_TEST_CODE>>,-gline-tables-only,-g>
    $<$<CXX_COMPILER_ID:Clang>:-gcodeview>
    $<$<BOOL:$<TARGET_PROPERTY:QUILL_IS_TEST_CODE>>:-O0>)
target_compile_options(quill_options INTERFACE $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
target_link_options(quill_options INTERFACE
    -fstack-protector-strong
    -Wl,--gc-sections
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:QUILL_IS_SHIPPED>>>:-Wl,--no-insert-timestamp>
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:QUILL_WITHOUT_THREAD_LIBRARY>>>:-pthread>)

if(QUILL_CHECKS)
    # No sanitizer runtime exists for this target, so undefined behaviour traps.
    target_compile_options(quill_options INTERFACE -fsanitize=undefined -fsanitize-trap=undefined
        # COM proxies and type-library dispatch call functions through types that the compiler does not see.
        -fno-sanitize=vptr,function)
endif()

# quill_set_output(TARGET): puts the binary and its .pdb into bin/. The linker runs in the build folder.
function(quill_set_output target)
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin
        LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin
        PREFIX "")
    get_target_property(output_name ${target} OUTPUT_NAME)
    if(NOT output_name)
        set(output_name ${target})
    endif()
    # A release has debug information for the module only, see quill_ship_image.
    if(QUILL_PRODUCT_ONLY)
        target_link_options(${target} PRIVATE -Wl,--strip-all)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        target_link_options(${target} PRIVATE -Wl,--pdb=bin/${output_name}.pdb)
    endif()
endfunction()

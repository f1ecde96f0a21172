# Functions that define the project's static libraries, for the cross build and the native build.

# quill_add_library(NAME SOURCES...): the static library quill_NAME with the alias quill::NAME.
function(quill_add_library name)
    add_library(quill_${name} STATIC ${ARGN})
    add_library(quill::${name} ALIAS quill_${name})
    target_include_directories(quill_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(quill_${name} PUBLIC quill::options)
endfunction()

# quill_add_plain_library(NAME SOURCES...): the static library quill_NAME_plain with the plain code of a folder.
# Plain code calls neither COM nor the window system, so it is also built natively, with sanitizers and fuzzers.
# tools/check-layers restricts its Windows headers to those in tests/native/include.
function(quill_add_plain_library name)
    quill_add_library(${name}_plain ${ARGN})
    set_property(GLOBAL APPEND PROPERTY QUILL_PLAIN_LIBRARIES quill::${name}_plain)
endfunction()

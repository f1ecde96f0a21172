# Libraries of the product and of what is around it; for the cross build and for the native one.

# quill_add_library(NAME SOURCES...): the static library "quill_NAME", also known as quill::NAME.
function(quill_add_library name)
    add_library(quill_${name} STATIC ${ARGN})
    add_library(quill::${name} ALIAS quill_${name})
    target_include_directories(quill_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(quill_${name} PUBLIC quill::options)
endfunction()

# quill_add_plain_library(NAME SOURCES...): the plain code of the folder NAME, the static library "quill_NAME_plain".
# Plain code decides and calls nothing of COM or of the window system, so it is built natively as well, where the
# sanitizers and fuzzers are. tools/check-layers holds it to the headers that tests/native/include has.
function(quill_add_plain_library name)
    quill_add_library(${name}_plain ${ARGN})
    set_property(GLOBAL APPEND PROPERTY QUILL_PLAIN_LIBRARIES quill::${name}_plain)
endfunction()

# quill_unimplemented_interfaces(TARGET INTERFACES...): an interface library with <unimplemented_interfaces.h>, base
# classes that implement every method of large system interfaces by calling unimplemented_method, which the program
# defines. For classes that implement only a few of many methods.
find_path(quill_windows_headers mshtml.h REQUIRED)

function(quill_unimplemented_interfaces target)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target})
    set(header ${folder}/unimplemented_interfaces.h)
    set(sources)
    foreach(name oaidl objidl oleidl ocidl exdisp mshtml)
        list(APPEND sources ${quill_windows_headers}/${name}.h)
    endforeach()
    set(script ${PROJECT_SOURCE_DIR}/cmake/unimplemented_interfaces.awk)
    file(MAKE_DIRECTORY ${folder})
    list(JOIN ARGN " " wanted)
    add_custom_command(OUTPUT ${header}
        COMMAND awk -v wanted=${wanted} -f ${script} ${sources} > ${header}
        DEPENDS ${script} ${sources}
        COMMENT "Writing unimplemented_interfaces.h" VERBATIM)
    add_custom_target(${target}_header DEPENDS ${header})
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${folder})
    add_dependencies(${target} ${target}_header)
endfunction()

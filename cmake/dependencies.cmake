# Header-only libraries of the build machine, for the cross build. /usr/include must not be on the include path
# because it contains the native C headers, so a folder of symbolic links provides the libraries.
set(quill_links ${PROJECT_BINARY_DIR}/dependencies)
file(MAKE_DIRECTORY ${quill_links}/spdlog ${quill_links}/boost)
foreach(entry spdlog/spdlog spdlog/fmt boost/boost)
    get_filename_component(name ${entry} NAME)
    if(NOT EXISTS /usr/include/${name})
        message(FATAL_ERROR "/usr/include/${name} is missing: run tools/install-packages")
    endif()
    file(CREATE_LINK /usr/include/${name} ${quill_links}/${entry} SYMBOLIC)
endforeach()

function(quill_header_library name folder)
    add_library(quill_dep_${name} INTERFACE IMPORTED GLOBAL)
    add_library(quill::dep::${name} ALIAS quill_dep_${name})
    target_include_directories(quill_dep_${name} SYSTEM INTERFACE ${quill_links}/${folder})
endfunction()

# fmt shares spdlog's folder because spdlog includes it.
quill_header_library(spdlog spdlog)
# SPDLOG_PREVENT_CHILD_FD: a child process must not inherit the log file, which could then not be renamed.
# SPDLOG_NO_TLS: later versions keep a thread_local map, whose destructor may run after the module is unloaded.
target_compile_definitions(quill_dep_spdlog INTERFACE
    FMT_HEADER_ONLY SPDLOG_FMT_EXTERNAL SPDLOG_WCHAR_FILENAMES SPDLOG_PREVENT_CHILD_FD SPDLOG_NO_TLS)
quill_header_library(boost boost)

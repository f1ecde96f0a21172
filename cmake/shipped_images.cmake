# What is shipped does not depend on where and when it is built: two builds of the same sources in two folders give the
# same images and debug information byte for byte. docs/releasing.md says how that is checked.

# Where the debug information says that the sources are. No path of the build machine may be in it.
set(quill_source_root C:/src/QuillPDF.IE)

# ON for images that are shipped.
define_property(TARGET PROPERTY QUILL_IS_SHIPPED)

# Of the prefixes that match a path, the compiler takes the one that was given last.
set(quill_path_options
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=${quill_source_root}
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=${quill_source_root}/build
    -ffile-prefix-map=${PROJECT_BINARY_DIR}/dependencies/spdlog=/usr/include
    -ffile-prefix-map=${PROJECT_BINARY_DIR}/dependencies/boost=/usr/include)
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    list(APPEND quill_path_options -fdebug-compilation-dir=${quill_source_root} -gno-codeview-command-line)
endif()
# The messages of failing tests have real paths, except in a release, whose acceptance kit has test programs.
set(quill_keeps_paths $<AND:$<BOOL:$<TARGET_PROPERTY:QUILL_IS_TEST_CODE>>,$<NOT:$<BOOL:${QUILL_PRODUCT_ONLY}>>>)
foreach(option ${quill_path_options})
    target_compile_options(quill_options INTERFACE
        $<$<NOT:$<OR:${quill_keeps_paths},$<COMPILE_LANGUAGE:RC>>>:${option}>)
endforeach()

# One source for the version: project(VERSION) in CMakeLists.txt. Windows Installer compares these three numbers and
# allows no larger ones.
if(NOT PROJECT_VERSION MATCHES "^(0|[1-9][0-9]*)[.](0|[1-9][0-9]*)[.](0|[1-9][0-9]*)$"
        OR PROJECT_VERSION_MAJOR GREATER 255 OR PROJECT_VERSION_MINOR GREATER 255 OR PROJECT_VERSION_PATCH GREATER 65535)
    message(FATAL_ERROR "VERSION ${PROJECT_VERSION}: must be three numbers, at most 255.255.65535")
endif()
set(quill_version_header ${PROJECT_BINARY_DIR}/version/quill_version.h)
configure_file(${PROJECT_SOURCE_DIR}/cmake/quill_version.h.in ${quill_version_header})
add_library(quill_version INTERFACE)
add_library(quill::version ALIAS quill_version)
target_include_directories(quill_version INTERFACE ${PROJECT_BINARY_DIR}/version)

# The debug information tells a debugger where below its source path (%targ%) each source of this version is.
function(quill_write_source_index path)
    set(patterns)
    foreach(folder ${QUILL_PRODUCT_FOLDERS})
        list(APPEND patterns ${PROJECT_SOURCE_DIR}/${folder}/*.h ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    endforeach()
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} ${patterns})
    string(REPLACE "/" "\\" root ${quill_source_root})
    set(QUILL_INDEXED_SOURCES)
    foreach(source ${sources})
        string(REPLACE "/" "\\" source ${source})
        string(APPEND QUILL_INDEXED_SOURCES "${root}\\${source}*${source}\r\n")
    endforeach()
    configure_file(${PROJECT_SOURCE_DIR}/cmake/source_index.txt.in ${path} @ONLY NEWLINE_STYLE DOS)
endfunction()
set(quill_source_index ${PROJECT_BINARY_DIR}/source_index.txt)
quill_write_source_index(${quill_source_index})

# quill_ship_image(TARGET): options of an image that is shipped, after quill_set_output. The linker runs in the build
# folder and records its command line, so the paths in it are relative to that folder.
function(quill_ship_image target)
    set_target_properties(${target} PROPERTIES QUILL_IS_SHIPPED ON)
    target_link_libraries(${target} PRIVATE quill::version)
    get_target_property(name ${target} OUTPUT_NAME)
    # Debug information is in the .pdb. The runtime's libraries would add theirs to the image in DWARF form.
    target_link_options(${target} PRIVATE -Wl,--strip-all -Wl,-Map=bin/${name}.map)
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
        target_link_options(${target} PRIVATE
            -Wl,--pdb=bin/${name}.pdb
            # The timestamp is a hash of the image: symbol servers tell versions apart by it.
            -Wl,-Xlink=-Brepro
            # The header's checksum, as signing sets it.
            -Wl,-Xlink=-release
            -Wl,-Xlink=-pdbaltpath:${name}.pdb
            -Wl,-Xlink=-pdbsourcepath:${quill_source_root}
            -Wl,-Xlink=-pdbstream:srcsrv=source_index.txt)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${quill_source_index})
    endif()
endfunction()

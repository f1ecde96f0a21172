# Tests run in one persistent Wine session because starting a new session takes seconds. tools/wine-session manages
# the session and its prefix; tools/wine-run runs one program in it.
set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/tools/wine-run)
# Starts a test program a second time if it printed nothing, also when it lists its tests.
set(quill_test_runner ${PROJECT_SOURCE_DIR}/tools/run-test)

set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
target_compile_options(gtest PRIVATE -O0)
target_compile_options(gmock PRIVATE -O0)
include(GoogleTest)

# The precompiled headers of all test programs.
set(DEFAULT_QUILL_IS_TEST_CODE ON)
add_library(test_precompiled OBJECT ${PROJECT_SOURCE_DIR}/tests/support/precompiled.cpp)
target_include_directories(test_precompiled PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(test_precompiled PRIVATE quill::options GTest::gmock)
target_precompile_headers(test_precompiled PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/precompiled.h)

# quill_precompile(TARGET): makes a test target use the precompiled headers.
function(quill_precompile target)
    target_precompile_headers(${target} REUSE_FROM test_precompiled)
endfunction()

# quill_add_test_parts(NAME [LIBRARIES...] SOURCES...): a static library NAME of code that several test programs share.
function(quill_add_test_parts name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC ${arg_LIBRARIES} test_support)
    quill_precompile(${name})
endfunction()

# quill_add_test(NAME [LIBRARIES...] SOURCES...): the test program test_NAME; each of its tests is registered with
# ctest as NAME.SUITE.TEST.
function(quill_add_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 180) # more than the watchdog's limit: the watchdog prints the stacks of a test that hangs
    endif()
    add_executable(test_${name} ${arg_SOURCES})
    set_target_properties(test_${name} PROPERTIES CROSSCOMPILING_EMULATOR ${quill_test_runner})
    target_link_libraries(test_${name} PRIVATE ${arg_LIBRARIES} test_support)
    target_include_directories(test_${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_options(test_${name} PRIVATE -municode)
    quill_precompile(test_${name})
    quill_set_output(test_${name})
    gtest_discover_tests(test_${name}
        TEST_PREFIX "${name}."
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS ${name})
endfunction()

# quill_add_plain_test(NAME SOURCES... WINDOWS_SOURCES... LIBRARIES...): a test program that the native build has too,
# without the sources and libraries that are for Windows only.
function(quill_add_plain_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;WINDOWS_SOURCES;LIBRARIES" ${ARGN})
    quill_add_test(${name} SOURCES ${arg_SOURCES} ${arg_WINDOWS_SOURCES} LIBRARIES ${arg_LIBRARIES})
endfunction()

# quill_add_python_tests(NAME): the tests that run.py of the current folder lists, registered with ctest as
# NAME.SUITE.TEST. Those that need Wine get a session with a prefix of their own.
function(quill_add_python_tests name)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.py)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sources})
    execute_process(COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/run.py --list
        OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+" listed "${listed}")
    set(run ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/run.py ${PROJECT_BINARY_DIR}/bin)
    foreach(line ${listed})
        string(REPLACE " " ";" line ${line})
        list(GET line 0 where)
        list(GET line 1 test)
        set(full_name ${name}.${test})
        if(where STREQUAL native)
            add_test(NAME ${full_name} COMMAND ${run} ${test})
            set_tests_properties(${full_name} PROPERTIES TIMEOUT 120 LABELS native)
        else()
            add_test(NAME ${full_name}
                COMMAND ${PROJECT_SOURCE_DIR}/tests/installer/in-new-prefix ${full_name} ${run} ${test})
            set_tests_properties(${full_name} PROPERTIES TIMEOUT 600 LABELS ${name})
        endif()
    endforeach()
endfunction()

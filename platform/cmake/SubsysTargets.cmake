# What every target of both projects shares: language, output folders, warnings, sanitizers, tests, the Android libraries
# of the distribution.

include_guard(GLOBAL)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

include(GNUInstallDirs)
# An installed program or library finds the others from where it stands.
set(CMAKE_INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set(SUBSYS_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/subsys)

find_package(Threads REQUIRED)
find_package(GTest REQUIRED)
include(GoogleTest)

get_filename_component(SUBSYS_PLATFORM_DIR ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)

set(SUBSYS_SANITIZE "" CACHE STRING "address (with undefined), thread, fuzzer (address, for libFuzzer); empty for none")
set_property(CACHE SUBSYS_SANITIZE PROPERTY STRINGS "" address thread fuzzer)

# Debian keeps the Android libraries and headers in folders of their own.
set(SUBSYS_ANDROID_LIB_DIR /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android)
function(subsys_import_android target library)
    add_library(${target} INTERFACE)
    find_library(${target}_PATH ${library} PATHS ${SUBSYS_ANDROID_LIB_DIR} NO_DEFAULT_PATH REQUIRED)
    target_include_directories(${target} SYSTEM INTERFACE /usr/include/android)
    target_link_libraries(${target} INTERFACE ${${target}_PATH})
    target_link_options(${target} INTERFACE -Wl,-rpath,${SUBSYS_ANDROID_LIB_DIR})
endfunction()
subsys_import_android(android_log log)
subsys_import_android(android_base base)

function(subsys_common target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
                                             -Woverloaded-virtual -Wvla -Werror)
    # A thread's variables are there when it starts: their first use neither allocates nor waits for the loader.
    target_compile_options(${target} PRIVATE -ftls-model=initial-exec)
    target_link_libraries(${target} PUBLIC Threads::Threads)
    if(SUBSYS_SANITIZE STREQUAL "address")
        # Without the check of virtual tables, which needs the type information that a component may be built without.
        set(flags -fsanitize=address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer)
    elseif(SUBSYS_SANITIZE STREQUAL "thread")
        set(flags -fsanitize=thread -fno-omit-frame-pointer)
    elseif(SUBSYS_SANITIZE STREQUAL "fuzzer")
        set(flags -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize=vptr -fno-sanitize-recover=all
                  -fno-omit-frame-pointer)
    else()
        set(flags)
    endif()
    target_compile_options(${target} PRIVATE ${flags})
    target_link_options(${target} PRIVATE ${flags})
endfunction()

# The room whose tests stand in the current folder, for `ctest -L`: rf for tests/rf, binder for platform/binder/tests.
function(subsys_room result)
    string(REGEX REPLACE "/tests$" "" folder ${CMAKE_CURRENT_SOURCE_DIR})
    get_filename_component(room ${folder} NAME)
    set(${result} ${room} PARENT_SCOPE)
endfunction()

# subsys_public_headers(<library> <folder>...): the headers in the folders are those of the library's users.
function(subsys_public_headers library)
    foreach(folder ${ARGN})
        file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${folder}/*.h)
        target_sources(${library} PUBLIC FILE_SET HEADERS BASE_DIRS ${folder} FILES ${headers})
    endforeach()
endfunction()

# subsys_install(<library>): installs the library under its version, with the headers of its file set.
function(subsys_install library)
    set_target_properties(${library} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    install(TARGETS ${library} EXPORT subsys FILE_SET HEADERS DESTINATION ${SUBSYS_INCLUDE_DIR})
endfunction()

# subsys_test(<name> SOURCES <files> LIBRARIES <targets>): a GoogleTest program. Each of its cases runs in a process of
# its own, since some of the system's flags are set once for a process. Its label is the room.
function(subsys_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    subsys_common(${name})
    target_include_directories(${name} PRIVATE ${SUBSYS_PLATFORM_DIR} ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} test_support GTest::gtest_main)
    # The tests are most of what a check compiles; nothing they do is worth an optimiser's time.
    target_compile_options(${name} PRIVATE -O0 -g1)
    # Shared by all tests, which takes the same code model for all of them.
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_precompile_headers(${name} REUSE_FROM test_support)
    subsys_room(room)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60 LABELS ${room})
endfunction()
find_package(GTest REQUIRED)
include(GoogleTest)

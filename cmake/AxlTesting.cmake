# SPDX-License-Identifier: MIT
# GoogleTest from Debian's source package, built with the project's flags (sanitizers, target).
set(AXL_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources")
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
add_subdirectory(${AXL_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

include(GoogleTest)

# axl_add_gtest(NAME SOURCES ... LIBRARIES ... [LEAK_SUPPRESSIONS] [ALSO_ON_THREADS]): one test
# program, each test case a CTest test.
#   LEAK_SUPPRESSIONS  every case runs with tests/lsan.supp: the driver's input payload buffers
#                      are never released, on purpose, and nothing else may leak.
#   ALSO_ON_THREADS    every case runs once more (prefix "threads.") with every virtual clock
#                      running the drivers on threads of their own instead of fibers.
function(axl_add_gtest name)
    cmake_parse_arguments(ARG "LEAK_SUPPRESSIONS;ALSO_ON_THREADS" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main)
    target_compile_features(${name} PRIVATE cxx_std_20)
    set(environment "")
    if(ARG_LEAK_SUPPRESSIONS)
        list(APPEND environment
            "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "${environment}")
    if(ARG_ALSO_ON_THREADS)
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
            TEST_PREFIX "threads."
            PROPERTIES ENVIRONMENT "${environment};VPLC_DRIVER_THREADS=threads")
    endif()
endfunction()

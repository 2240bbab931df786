# SPDX-License-Identifier: MIT
cmake_minimum_required(VERSION 3.25)

# Checks that a shared library defines no dynamic symbols of its own beyond the expected ones.
#   cmake -DNM=<nm> -DLIBRARY=<path> -DEXPECTED=<name;name> -P CheckExports.cmake

execute_process(
    COMMAND ${NM} -D --defined-only ${LIBRARY}
    OUTPUT_VARIABLE output
    RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()

# What the toolchain adds to every shared library.
set(toolchain_symbols _init _fini _edata _end __bss_start)

string(REPLACE "\n" ";" lines "${output}")
set(found)
foreach(line IN LISTS lines)
    if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] (.+)$")
        set(symbol "${CMAKE_MATCH_1}")
        if(NOT symbol IN_LIST toolchain_symbols)
            list(APPEND found "${symbol}")
        endif()
    endif()
endforeach()

list(SORT found)
set(expected ${EXPECTED})
list(SORT expected)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "${LIBRARY} defines [${found}], expected exactly [${expected}]")
endif()
message(STATUS "${LIBRARY} defines exactly [${found}]")

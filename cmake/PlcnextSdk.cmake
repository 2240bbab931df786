# SPDX-License-Identifier: MIT
# Builds only the driver, against a PLCnext controller SDK instead of platform/ and the virtual
# controller: the SDK's headers and its Arp libraries. The host contract stays this project's:
# host/ and liborbel_intrf (built from sim/host), which the driver links as on the controller.
#
#   cmake -S . -B build/sdk -DCMAKE_TOOLCHAIN_FILE=<toolchain> -DPLCNEXT_SDK_ROOT=<sysroot>
#
# The headers are looked for in <sysroot>/usr/include and the libraries in <sysroot>/usr/lib;
# PLCNEXT_SDK_INCLUDE_DIRS (a list) and PLCNEXT_SDK_LIBRARY_DIR point elsewhere when an SDK keeps
# them in other folders.

if(NOT DEFINED PLCNEXT_SDK_INCLUDE_DIRS)
    set(PLCNEXT_SDK_INCLUDE_DIRS ${PLCNEXT_SDK_ROOT}/usr/include)
endif()
if(NOT DEFINED PLCNEXT_SDK_LIBRARY_DIR)
    set(PLCNEXT_SDK_LIBRARY_DIR ${PLCNEXT_SDK_ROOT}/usr/lib)
endif()

# The first header the driver includes; its absence means the folders are wrong, and saying so
# here beats a compiler error in the middle of the build.
find_path(plcnext_sdk_headers Arp/Plc/AnsiC/Gds/DataLayout.h
    PATHS ${PLCNEXT_SDK_INCLUDE_DIRS} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
if(NOT plcnext_sdk_headers)
    message(FATAL_ERROR "PLCNEXT_SDK_ROOT: no Arp/Plc/AnsiC/Gds/DataLayout.h in "
                        "${PLCNEXT_SDK_INCLUDE_DIRS} (set PLCNEXT_SDK_INCLUDE_DIRS)")
endif()

add_library(plcnext_platform_headers INTERFACE)
target_include_directories(plcnext_platform_headers SYSTEM INTERFACE ${PLCNEXT_SDK_INCLUDE_DIRS})

# The SDK's libraries under the names of the targets that the driver links (src/CMakeLists.txt).
foreach(library Arp.Plc.AnsiC Arp.System.Commons Arp.System.Rsc Arp.System.Module)
    find_library(plcnext_sdk_${library} NAMES ${library}
        PATHS ${PLCNEXT_SDK_LIBRARY_DIR} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
    if(NOT plcnext_sdk_${library})
        message(FATAL_ERROR "PLCNEXT_SDK_ROOT: no lib${library}.so in ${PLCNEXT_SDK_LIBRARY_DIR} "
                            "(set PLCNEXT_SDK_LIBRARY_DIR)")
    endif()
    add_library(${library} SHARED IMPORTED)
    set_target_properties(${library} PROPERTIES IMPORTED_LOCATION ${plcnext_sdk_${library}})
    target_link_libraries(${library} INTERFACE plcnext_platform_headers)
    # The linker checks the libraries' own dependencies, which live beside them.
    target_link_options(${library} INTERFACE LINKER:-rpath-link,${PLCNEXT_SDK_LIBRARY_DIR})
endforeach()

message(STATUS "Building the driver against the controller SDK in ${PLCNEXT_SDK_ROOT}")

add_subdirectory(host)
add_subdirectory(sim/host)
add_subdirectory(src)

include(Install)
include(Packaging)

# SPDX-License-Identifier: MIT
# Packages made by `cpack` in <build>/packages: a .tar.gz and a .deb per component (see
# Install.cmake). A cross build packages the driver for its target (armhf); a native build
# packages the driver and the workstation tools for the machine's own architecture.

set(AXL_PACKAGE_CONTACT "PLCnext Axioline driver maintainers" CACHE STRING
    "Maintainer named in the Debian packages")

if(CMAKE_CROSSCOMPILING)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
        set(AXL_PACKAGE_ARCHITECTURE armhf)
    else()
        set(AXL_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
    endif()
    set(CPACK_COMPONENTS_ALL driver)
else()
    execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE AXL_PACKAGE_ARCHITECTURE
                    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT AXL_PACKAGE_ARCHITECTURE)
        set(AXL_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
    endif()
    if(PLCNEXT_SDK_ROOT)
        set(CPACK_COMPONENTS_ALL driver)
    else()
        set(CPACK_COMPONENTS_ALL driver workstation)
    endif()
endif()

set(CPACK_PACKAGE_NAME plcnext-axioline)
set(CPACK_PACKAGE_VENDOR "PLCnext Axioline driver")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${AXL_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)

set(CPACK_COMPONENT_DRIVER_DISPLAY_NAME "Axioline F driver for PLCnext")
set(CPACK_COMPONENT_DRIVER_DESCRIPTION "Axioline F terminal module driver for a PLCnext host runtime
libplcnext_driver.so serves an AXL F DI8/1 DO8/1 or AXL F AI2 AO2 terminal module for the host
function-block runtime of a PLCnext controller, through the Global Data Space.")
set(CPACK_COMPONENT_WORKSTATION_DISPLAY_NAME "Axioline F driver workstation tools")
set(CPACK_COMPONENT_WORKSTATION_DESCRIPTION "Virtual PLCnext controller and host for the Axioline F driver
The substitute host library, the virtual PLCnext controller with its Arp runtime libraries, and
axlsim, which runs a driver configuration on them, so that the driver can be tried without a
controller.")
set(CPACK_COMPONENT_WORKSTATION_DEPENDS driver)

# Archives: one per component, named like the Debian packages.
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_DRIVER_FILE_NAME
    plcnext-axioline-driver_${PROJECT_VERSION}_${AXL_PACKAGE_ARCHITECTURE})
set(CPACK_ARCHIVE_WORKSTATION_FILE_NAME
    plcnext-axioline-workstation_${PROJECT_VERSION}_${AXL_PACKAGE_ARCHITECTURE})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${AXL_PACKAGE_ARCHITECTURE})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_DRIVER_PACKAGE_NAME plcnext-axioline-driver)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SECTION libs)
# The controller's firmware provides what the driver links against; nothing here can name it.
set(CPACK_DEBIAN_DRIVER_PACKAGE_DEPENDS "")
set(CPACK_DEBIAN_WORKSTATION_PACKAGE_NAME plcnext-axioline-workstation)
set(CPACK_DEBIAN_WORKSTATION_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_WORKSTATION_PACKAGE_DEPENDS "libc6, libgcc-s1, libstdc++6")

include(CPack)

# SPDX-License-Identifier: MIT
# What `cmake --install` puts where, by component:
#
#   driver           libplcnext_driver.so, the README and an example host configuration: what an
#                    integrator copies onto a controller.
#   workstation      the substitute host, the virtual controller (with its Arp runtime libraries),
#                    the tools and the headers to build host programs against them.
#   plcnext_sysroot  the platform declarations and the virtual controller laid out like a
#                    controller SDK's sysroot below <prefix> (install with --prefix <sysroot>/usr),
#                    for building the driver with PLCNEXT_SDK_ROOT. Installed only when named.
#
# The layout is fixed (bin, lib, include, share) rather than taken from GNUInstallDirs: programs
# load the driver from ../lib beside them, and a controller has no multiarch library folders.

set(AXL_DRIVER_DOC_DIR share/doc/plcnext-axioline-driver)
set(AXL_WORKSTATION_INCLUDE_DIR include/plcnext-axioline)
set(AXL_WORKSTATION_DATA_DIR share/plcnext-axioline)
set(AXL_WORKSTATION_DOC_DIR share/doc/plcnext-axioline-workstation)

if(TARGET plcnext_driver)
    install(TARGETS plcnext_driver LIBRARY DESTINATION lib COMPONENT driver)
    # On a controller the platform's libraries lie in the loader's own path; on a workstation the
    # virtual controller's lie beside the driver, wherever the package was unpacked.
    if(NOT CMAKE_CROSSCOMPILING AND NOT PLCNEXT_SDK_ROOT)
        set_target_properties(plcnext_driver PROPERTIES INSTALL_RPATH "$ORIGIN")
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${AXL_DRIVER_DOC_DIR}
            COMPONENT driver)
    # The licence, where Debian looks for a package's licence.
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${AXL_DRIVER_DOC_DIR}
            RENAME copyright COMPONENT driver)
    # The configuration that axlsim's demo runs: driver parameters, event-id mappings and
    # services, as a host fills its records.
    set(AXL_EXAMPLE_HOST_CONFIGURATION ${PROJECT_SOURCE_DIR}/examples/feedback_loop.json)
    if(EXISTS ${AXL_EXAMPLE_HOST_CONFIGURATION})
        install(FILES ${AXL_EXAMPLE_HOST_CONFIGURATION} DESTINATION ${AXL_DRIVER_DOC_DIR}/examples
                COMPONENT driver)
    else()
        message(WARNING "Install: ${AXL_EXAMPLE_HOST_CONFIGURATION} is missing")
    endif()
endif()

# The virtual controller's libraries, with the host library and the virtual clock between them.
set(AXL_VIRTUAL_CONTROLLER_LIBRARIES
    orbel_intrf vplc vplc_clock vplc_runtime Arp.Plc.AnsiC Arp.System.Commons Arp.System.Rsc
    Arp.System.Module)

if(TARGET vplc)
    foreach(library IN LISTS AXL_VIRTUAL_CONTROLLER_LIBRARIES)
        if(TARGET ${library})
            install(TARGETS ${library} LIBRARY DESTINATION lib COMPONENT workstation)
            set_target_properties(${library} PROPERTIES INSTALL_RPATH "$ORIGIN")
        endif()
    endforeach()
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${AXL_WORKSTATION_DOC_DIR}
            RENAME copyright COMPONENT workstation)
    foreach(program hello_driver axlsim)
        if(TARGET ${program})
            install(TARGETS ${program} RUNTIME DESTINATION bin COMPONENT workstation)
            set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
        endif()
    endforeach()

    install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/ ${PROJECT_SOURCE_DIR}/platform/
                      ${PROJECT_SOURCE_DIR}/sim/host/include/
                      ${PROJECT_SOURCE_DIR}/sim/controller/include/
                      ${PROJECT_SOURCE_DIR}/sim/clock/include/
                      ${PROJECT_SOURCE_DIR}/sim/runtime/include/
            DESTINATION ${AXL_WORKSTATION_INCLUDE_DIR} COMPONENT workstation
            FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
    file(GLOB AXL_EXAMPLE_CONFIGURATIONS ${PROJECT_SOURCE_DIR}/examples/*.json)
    install(FILES ${AXL_EXAMPLE_CONFIGURATIONS} DESTINATION ${AXL_WORKSTATION_DATA_DIR}/examples
            COMPONENT workstation)

    install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/ DESTINATION include
            COMPONENT plcnext_sysroot EXCLUDE_FROM_ALL
            FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
    foreach(library IN LISTS AXL_VIRTUAL_CONTROLLER_LIBRARIES)
        if(TARGET ${library})
            install(TARGETS ${library} LIBRARY DESTINATION lib
                    COMPONENT plcnext_sysroot EXCLUDE_FROM_ALL)
        endif()
    endforeach()
endif()

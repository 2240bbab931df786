# SPDX-License-Identifier: MIT
# Shows that the controller SDK switch (PLCNEXT_SDK_ROOT) works, without a controller SDK: lays
# the platform declarations and the virtual controller out as an SDK sysroot, builds the driver
# from this source tree against it in a build of its own, checks what the driver was compiled and
# linked against, and runs it on the virtual controller with the SDK smoke host.
#
#   cmake -DSETTINGS=<build>/tests/sdk/SdkProofSettings.cmake -P ProveSdkSwitch.cmake

include(${SETTINGS})

set(sysroot ${WORK_DIR}/sysroot)
set(build ${WORK_DIR}/build)
set(driver ${build}/lib/libplcnext_driver.so)
set(arp_libraries Arp.Plc.AnsiC Arp.System.Commons Arp.System.Rsc Arp.System.Module)

# Runs a command; stops the proof with its output if it fails. The output is left in `output`.
function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${what} failed (${result}):\n${out}")
    endif()
    set(output "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})

run("Installing the sysroot"
    ${CMAKE_COMMAND} --install ${OUTER_BUILD_DIR} --component plcnext_sysroot
    --prefix ${sysroot}/usr)

set(configure_arguments
    -S ${SOURCE_DIR} -B ${build} -G ${GENERATOR}
    -DPLCNEXT_SDK_ROOT=${sysroot}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${EXE_LINKER_FLAGS}"
    "-DCMAKE_SHARED_LINKER_FLAGS=${SHARED_LINKER_FLAGS}")
if(TOOLCHAIN_FILE)
    list(APPEND configure_arguments -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()
run("Configuring the driver against the sysroot" ${CMAKE_COMMAND} ${configure_arguments})
run("Building the driver against the sysroot"
    ${CMAKE_COMMAND} --build ${build} --target plcnext_driver --parallel 2)

# Compiled against the sysroot's headers, never against platform/.
file(READ ${build}/compile_commands.json commands)
string(FIND "${commands}" "-isystem ${sysroot}/usr/include" sdk_include)
string(FIND "${commands}" "${SOURCE_DIR}/platform" own_platform)
if(sdk_include EQUAL -1 OR NOT own_platform EQUAL -1)
    message(FATAL_ERROR "The driver was not compiled against ${sysroot}/usr/include alone:\n"
                        "${commands}")
endif()

# Linked against the sysroot's Arp libraries and the host library, as on the controller.
run("Reading the driver's dynamic section" ${READELF} --dynamic ${driver})
foreach(needed liborbel_intrf.so ${arp_libraries})
    if(NOT needed MATCHES "\\.so$")
        set(needed lib${needed}.so)
    endif()
    string(FIND "${output}" "Shared library: [${needed}]" found)
    if(found EQUAL -1)
        message(FATAL_ERROR "The driver does not link ${needed}:\n${output}")
    endif()
endforeach()

# The driver's payload buffers are kept for its lifetime on purpose.
set(ENV{LSAN_OPTIONS} "suppressions=${SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")
run("Running the driver" ${EMULATOR} ${SMOKE_HOST} ${driver})
message(STATUS "${output}")
foreach(library ${arp_libraries})
    string(FIND "${output}" "lib${library}.so loaded from ${sysroot}/usr/lib/lib${library}.so"
           found)
    if(found EQUAL -1)
        message(FATAL_ERROR "lib${library}.so was not loaded from the sysroot:\n${output}")
    endif()
endforeach()

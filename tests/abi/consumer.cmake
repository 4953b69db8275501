# Installs the library, then builds and runs a project that finds it there, once per setting: the
# C++ standard and further flags. Without a build folder it first builds the library alone.

cmake_minimum_required(VERSION 3.24)

# Runs a command and sets `output` to what it prints.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE text
        ERROR_VARIABLE text)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}:\n${text}")
    endif()
    message("${text}")
    set(output "${text}" PARENT_SCOPE)
endfunction()

# Fails unless `text` contains `part` as often as said.
function(expect_count count part text)
    string(REPLACE "${part}" "" without "${text}")
    string(LENGTH "${text}" all)
    string(LENGTH "${without}" rest)
    string(LENGTH "${part}" one)
    math(EXPR found "(${all} - ${rest}) / ${one}")
    if(NOT found EQUAL count)
        message(FATAL_ERROR "\"${part}\" is there ${found} times, not ${count}, in:\n${text}")
    endif()
endfunction()

# The document shows what is compiled and run here.
file(READ ${project}/docs/integration.md document)
file(READ ${CMAKE_CURRENT_LIST_DIR}/consumer/ServiceCalls.h shown)
string(REGEX REPLACE "^.*#pragma once\n\n" "" shown "${shown}")
expect_count(1 "```cpp\n${shown}```\n" "${document}")

file(REMOVE_RECURSE ${work})
set(prefix ${work}/prefix)
if(NOT build)
    set(build ${work}/build)
    run(${CMAKE_COMMAND} -S ${project} -B ${build} -DCMAKE_CXX_COMPILER=${compiler}
        -DCMAKE_CXX_COMPILER_LAUNCHER=${launcher} -DCMAKE_BUILD_TYPE=Debug)
    run(${CMAKE_COMMAND} --build ${build} --target caminfosync)
endif()
run(${CMAKE_COMMAND} --install ${build} --prefix ${prefix} --component caminfosync)
run(${CMAKE_CURRENT_LIST_DIR}/check-run-paths.sh ${prefix} ${project} ${build} ${sysroot})

set(no_properties "no properties found: \"${work}/no-root/build.prop\" cannot be read")
foreach(setting IN LISTS settings)
    string(MAKE_C_IDENTIFIER "${setting}" name)
    string(REGEX MATCH "^[0-9]+" standard "${setting}")
    string(REGEX REPLACE "^[0-9]+" "" more "${setting}")
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${work}/${name}
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_ROOT_PATH=${prefix}
        -DCMAKE_CXX_COMPILER=${compiler} -DCMAKE_TOOLCHAIN_FILE=${toolchain}
        -DCMAKE_CXX_STANDARD=${standard} "-DCMAKE_CXX_FLAGS=${flags}${more}")
    run(${CMAKE_COMMAND} --build ${work}/${name})

    set(consumer ${emulator} ${work}/${name}/consumer)
    run(${consumer})
    expect_count(0 "no properties" "${output}")
    # Without properties nothing is collected, and the desk says why.
    run(${CMAKE_COMMAND} -E env INFOSYNC_HOST_ROOT=${work}/no-root ${consumer} --expect-nothing)
    expect_count(1 "${no_properties}" "${output}")
    run(${CMAKE_COMMAND} -E env INFOSYNC_HOST_ROOT=${work}/no-root INFOSYNC_HOST_PROPERTIES=a=b
        ${consumer} --expect-nothing)
    expect_count(0 "no properties" "${output}")
endforeach()

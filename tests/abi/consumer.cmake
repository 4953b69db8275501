# Installs the library, then builds and runs a project that finds it there, once per setting.

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}:\n${output}")
    endif()
    message("${output}")
endfunction()

file(REMOVE_RECURSE ${work})
run(${CMAKE_COMMAND} --install ${build} --prefix ${work}/prefix)
foreach(setting IN LISTS settings)
    string(MAKE_C_IDENTIFIER "${setting}" name)
    run(${CMAKE_COMMAND} -S ${source} -B ${work}/${name} -DCMAKE_PREFIX_PATH=${work}/prefix
        -DCMAKE_FIND_ROOT_PATH=${work}/prefix -DCMAKE_CXX_COMPILER=${compiler}
        -DCMAKE_TOOLCHAIN_FILE=${toolchain} "-DCMAKE_CXX_FLAGS=${flags} ${setting}")
    run(${CMAKE_COMMAND} --build ${work}/${name})
    run(${emulator} ${work}/${name}/consumer)
endforeach()

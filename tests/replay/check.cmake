# Runs TOOL in a fresh folder WORK that holds copies of the logs, and compares.
#
# EXPECT is a list of:  ARGS arg...          the tool's arguments
#   STATUS n            exit status; 0 by default
#   STDIN log           comes through a pipe as standard input
#   STDOUT file         what standard output must be, to the byte; a file in expected/
#   JSON file           what calls.jsonl must be
#   NO_JSON             there must be no calls.jsonl
#   STDERR_FILE file    what standard error must be, but for the library's first line
#   STDERR pattern, STDOUT_MATCHES pattern
#   CLOSED_STDOUT       the tool has no standard output
#   LONG_LOG, THREADS_LOG, ORDER_LOG         logs that are made here
#   CHANGED_LOG         a log that is cut once the tool plays it
#   MEMORY kilobytes    that the tool may map
#   INSTALLED_FROM build INSTALLED_TO bindir installs the build folder and runs that program

cmake_minimum_required(VERSION 3.24)
cmake_parse_arguments(T "NO_JSON;CLOSED_STDOUT;LONG_LOG;THREADS_LOG;ORDER_LOG;CHANGED_LOG"
    "MEMORY;STATUS;STDIN;STDOUT;JSON;STDERR_FILE;STDERR;STDOUT_MATCHES;INSTALLED_FROM;INSTALLED_TO"
    "ARGS" ${EXPECT})
if(T_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "not understood: ${T_UNPARSED_ARGUMENTS}")
endif()
if(NOT DEFINED T_STATUS)
    set(T_STATUS 0)
endif()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(GLOB logs ${PROJECT}/scenarios/*.jsonl ${CMAKE_CURRENT_LIST_DIR}/logs/*.jsonl)
file(COPY ${logs} DESTINATION ${WORK})
if(T_LONG_LOG)
    string(REPEAT "[" 67108864 line)
    file(WRITE ${WORK}/long.jsonl "${line}\n\n{}\n")
endif()
if(T_THREADS_LOG)
    foreach(number RANGE 1 80)
        file(APPEND ${WORK}/threads.jsonl
            "{\"call\":\"updateAnchorFrame\",\"image\":\"A\",\"anchorFrame\":1,\"thread\":\"${number}\"}\n")
    endforeach()
endif()
if(T_ORDER_LOG)
    # Each result of the slow capture takes the thread so long that calls queue up behind it.
    string(REPEAT "1," 20000 ids)
    set(head "\"thread\":\"t\",\"image\"")
    set(log "{\"call\":\"registerSnapshotRequestRecord\",${head}:\"fast\"}
{\"call\":\"registerSnapshotRequestRecord\",${head}:\"slow\"}
{\"call\":\"updateRequestInfo\",${head}:\"slow\",\"reqValueA\":0,\"reqValueB\":0,\"reqFlag\":false,\
\"reqValue64\":0,\"reqIdsA\":[],\"expectedResultIds\":[${ids}1]}\n")
    foreach(iso RANGE 1 40)
        string(APPEND log
            "{\"call\":\"updateVndResultInfo\",${head}:\"slow\",\"resultId\":1,\"errorCode\":0}
{\"call\":\"updateAnchor3aInfo\",${head}:\"fast\",\"fstop\":1,\"iso\":${iso},\"lux\":1,\"exposureTime\":1}\n")
    endforeach()
    file(WRITE ${WORK}/order.jsonl
        "${log}{\"barrier\":true}\n{\"call\":\"snapshotRequestInfoFlush\",\"image\":\"fast\"}\n")
endif()
if(T_CHANGED_LOG)
    # More than the tool reads ahead, and logs until the pipe is full. A line has 64 bytes: what is
    # read ahead ends with a line.
    string(REPEAT "{\"call\":\"registerSnapshotRequestRecord\",\"image\":\"AAAAAAAAAAAA\"}\n" 20000 log)
    file(WRITE ${WORK}/changed.jsonl "${log}")
endif()
if(DEFINED T_INSTALLED_FROM)
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${T_INSTALLED_FROM} --prefix ${WORK}/prefix
        COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
    list(POP_BACK TOOL)
    list(APPEND TOOL ${WORK}/prefix/${T_INSTALLED_TO}/infosync-replay)
endif()
if(DEFINED T_STDIN)
    set(source COMMAND cat ${WORK}/${T_STDIN})
endif()

list(REMOVE_ITEM TOOL "")
if(T_CLOSED_STDOUT)
    set(TOOL sh -c "exec \"$@\" >&-" sh ${TOOL})
endif()
if(T_CHANGED_LOG)
    set(TOOL sh ${CMAKE_CURRENT_LIST_DIR}/cut-log.sh changed.jsonl ${TOOL})
endif()
if(DEFINED T_MEMORY)
    set(TOOL sh -c "ulimit -v ${T_MEMORY} && exec \"$@\"" sh ${TOOL})
endif()
execute_process(${source} COMMAND ${TOOL} ${T_ARGS} WORKING_DIRECTORY ${WORK}
    OUTPUT_FILE ${WORK}/stdout ERROR_FILE ${WORK}/stderr RESULT_VARIABLE status)
if(NOT status STREQUAL T_STATUS)
    message(SEND_ERROR "exit status ${status} instead of ${T_STATUS}")
endif()

function(compare actual expected)
    execute_process(COMMAND diff -u ${CMAKE_CURRENT_LIST_DIR}/expected/${expected} ${actual}
        RESULT_VARIABLE difference)
    if(NOT difference EQUAL 0)
        message(SEND_ERROR "${actual} is not as expected")
    endif()
endfunction()

function(match actual pattern)
    file(READ ${actual} text)
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "no match of '${pattern}' in:\n${text}")
    endif()
endfunction()

if(DEFINED T_STDOUT)
    compare(${WORK}/stdout ${T_STDOUT})
endif()
if(DEFINED T_STDOUT_MATCHES)
    match(${WORK}/stdout "${T_STDOUT_MATCHES}")
endif()
if(DEFINED T_JSON)
    compare(${WORK}/calls.jsonl ${T_JSON})
endif()
if(T_NO_JSON AND EXISTS ${WORK}/calls.jsonl)
    message(SEND_ERROR "calls.jsonl was written")
endif()
if(DEFINED T_STDERR_FILE)
    execute_process(COMMAND sed "/^features_mgr_handle = /d" ${WORK}/stderr
        OUTPUT_FILE ${WORK}/stderr.checked COMMAND_ERROR_IS_FATAL ANY)
    compare(${WORK}/stderr.checked ${T_STDERR_FILE})
endif()
if(DEFINED T_STDERR)
    match(${WORK}/stderr "${T_STDERR}")
endif()

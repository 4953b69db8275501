# Writes OUTPUT, a source that holds the page without its data. FOLDER has the page's files, D3 and
# NOTICE are D3's script and the text of its licence; without D3 there is no page.

cmake_minimum_required(VERSION 3.24)

set(SCRIPTS data.js chart.js table.js capture.js page.js)

if(NOT D3)
    file(WRITE ${OUTPUT} "#include \"PageParts.h\"
std::optional<view::PageParts> view::builtInPage() { return std::nullopt; }
")
    return()
endif()

# The hash as a content-security policy names it: in base 64.
function(policy_hash text result)
    set(digits "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    string(SHA256 hash "${text}")
    set(base64 "")
    # 32 bytes are ten groups of three, and two bytes that are filled up.
    foreach(position RANGE 0 60 6)
        string(SUBSTRING "${hash}00" ${position} 6 group)
        foreach(shift 18 12 6 0)
            math(EXPR digit "(0x${group} >> ${shift}) & 63")
            string(SUBSTRING "${digits}" ${digit} 1 character)
            string(APPEND base64 "${character}")
        endforeach()
    endforeach()
    string(SUBSTRING "${base64}" 0 43 base64)
    set(${result} "'sha256-${base64}='" PARENT_SCOPE)
endfunction()

# The text as it stands in the elements of a page.
function(escape_html text result)
    string(REPLACE "&" "&amp;" text "${text}")
    string(REPLACE "<" "&lt;" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

file(READ ${FOLDER}/page.html page)
file(READ ${FOLDER}/page.css style)
file(READ ${D3} d3)
file(READ ${NOTICE} notice)
set(script "\"use strict\";\n")
foreach(name IN LISTS SCRIPTS)
    file(READ ${FOLDER}/${name} part)
    string(APPEND script "${part}")
endforeach()
foreach(part style d3 script)
    if("${${part}}" MATCHES "</(style|script)|<!--")
        message(FATAL_ERROR "The page's ${part} would end its element")
    endif()
    policy_hash("${${part}}" ${part}_hash)
endforeach()
escape_html("${notice}" notice)

# The data is found before the scripts are put in, which could name it.
string(FIND "${page}" "@DATA@" data)
string(SUBSTRING "${page}" 0 ${data} before)
math(EXPR data "${data} + 6")
string(SUBSTRING "${page}" ${data} -1 after)
string(REPLACE "@POLICY@" "default-src 'none'; script-src ${d3_hash} ${script_hash}; \
style-src ${style_hash}; base-uri 'none'; form-action 'none'" before "${before}")
string(REPLACE "@STYLE@" "${style}" before "${before}")
string(REPLACE "@NOTICE@" "${notice}" before "${before}")
string(REPLACE "@SCRIPT@" "${script}" after "${after}")
string(REPLACE "@D3@" "${d3}" after "${after}")

file(WRITE ${OUTPUT} "#include \"PageParts.h\"
std::optional<view::PageParts> view::builtInPage() {
    return PageParts{R\"page(${before})page\", R\"page(${after})page\"};
}
")

# Reads every #include of the tree below SOURCE_DIR and fails on one against the arrows:
#     coeffiles -> records
#     partitionmerge -> coeffiles, records
#     multilayer -> partitionmerge, coeffiles, records
#     seamrevise, examples -> public headers only
#     public headers -> public headers only
# PUBLIC_HEADERS is the file that lists the public headers.

cmake_minimum_required(VERSION 3.25)
include(${PUBLIC_HEADERS})
set(folders records coeffiles partitionmerge multilayer seamrevise examples)
set(arrows_records "")
set(arrows_coeffiles records)
set(arrows_partitionmerge coeffiles records)
set(arrows_multilayer partitionmerge coeffiles records)
set(project_folders ${folders} tests bench fuzz)
# Made by the build.
set(generated_headers seamrevision_export.h)

# is_allowed(FILE HEADER OUT): both are paths from the top of the tree.
function(is_allowed file header out)
    string(REGEX REPLACE "/.*" "" from ${file})
    string(REGEX REPLACE "/.*" "" to ${header})
    set(${out} FALSE PARENT_SCOPE)
    if(header IN_LIST generated_headers OR header MATCHES "^[^/]+\\.moc$")
        set(${out} TRUE PARENT_SCOPE)
    elseif(file IN_LIST SEAMREVISION_PUBLIC_HEADERS)
        if(header IN_LIST SEAMREVISION_PUBLIC_HEADERS)
            set(${out} TRUE PARENT_SCOPE)
        endif()
    elseif(from STREQUAL to)
        set(${out} TRUE PARENT_SCOPE)
    elseif(from STREQUAL "seamrevise" OR from STREQUAL "examples")
        if(header IN_LIST SEAMREVISION_PUBLIC_HEADERS)
            set(${out} TRUE PARENT_SCOPE)
        endif()
    elseif(to IN_LIST arrows_${from})
        set(${out} TRUE PARENT_SCOPE)
    endif()
endfunction()

set(violations "")
set(include_count 0)
foreach(folder IN LISTS folders)
    file(GLOB_RECURSE files RELATIVE ${SOURCE_DIR}
        ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cpp ${SOURCE_DIR}/${folder}/*.inc)
    foreach(file IN LISTS files)
        file(STRINGS ${SOURCE_DIR}/${file} lines REGEX "^[ \t]*#[ \t]*include")
        foreach(line IN LISTS lines)
            if(NOT line MATCHES "include[ \t]*([\"<])([^\">]+)[\">]")
                continue()
            endif()
            set(opening ${CMAKE_MATCH_1})
            set(header ${CMAKE_MATCH_2})
            string(REGEX REPLACE "/.*" "" to ${header})
            # What stands in angle brackets is Qt's or the standard's, unless it is ours.
            if(opening STREQUAL "<" AND NOT to IN_LIST project_folders)
                continue()
            endif()
            math(EXPR include_count "${include_count} + 1")
            is_allowed(${file} ${header} allowed)
            if(NOT allowed)
                list(APPEND violations "${file} includes ${header}")
            endif()
        endforeach()
    endforeach()
endforeach()

if(include_count EQUAL 0)
    message(FATAL_ERROR "No #include found below ${SOURCE_DIR}")
endif()
if(violations)
    list(LENGTH violations count)
    list(JOIN violations "\n    " text)
    message(FATAL_ERROR "${count} of ${include_count} includes go against the arrows:\n    ${text}")
endif()
message(STATUS "${include_count} includes follow the arrows")

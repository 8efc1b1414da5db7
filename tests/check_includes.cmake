# Reads every #include of the tree below SOURCE_DIR and fails on one against the arrows below.
# Sources name the room of a header, "revision/blend.h"; a public header is <seamrevision/des.h>
# and belongs to the room of its class. It includes public headers only.

cmake_minimum_required(VERSION 3.25)
set(library_rooms records cipher coeffiles revision singlelayer multilayer)
set(arrows_records "")
set(arrows_cipher "")
set(arrows_coeffiles records cipher)
set(arrows_revision coeffiles records)
set(arrows_singlelayer revision coeffiles records)
set(arrows_multilayer singlelayer revision coeffiles records)
# Public headers are those of records but for these.
set(room_of_des.h cipher)
set(room_of_partitionmerge.h singlelayer)
set(room_of_multilayerpartitionmerge.h multilayer)

# The program knows the library by its public headers.
set(program_rooms process store numbers delivery exchange simulation engines commands)
set(arrows_process "")
set(arrows_store process)
set(arrows_numbers process store)
set(arrows_exchange store)
set(arrows_delivery process store exchange)
set(arrows_simulation store)
set(arrows_engines process store numbers exchange)
set(arrows_commands ${program_rooms})

# room_of_file(FILE TREE ROOM): the path from the top of the tree; the program's main is a command.
function(room_of_file file tree room)
    set(${tree} other PARENT_SCOPE)
    set(${room} "" PARENT_SCOPE)
    if(file MATCHES "^include/seamrevision/(.+)$")
        room_of_public_header(${CMAKE_MATCH_1} public_room)
        set(${tree} public PARENT_SCOPE)
        set(${room} ${public_room} PARENT_SCOPE)
    elseif(file MATCHES "^src/([^/]+)/")
        set(${tree} library PARENT_SCOPE)
        set(${room} ${CMAKE_MATCH_1} PARENT_SCOPE)
    elseif(file MATCHES "^seamrevise/([^/]+)/")
        set(${tree} program PARENT_SCOPE)
        set(${room} ${CMAKE_MATCH_1} PARENT_SCOPE)
    elseif(file MATCHES "^seamrevise/")
        set(${tree} program PARENT_SCOPE)
        set(${room} commands PARENT_SCOPE)
    endif()
endfunction()

function(room_of_public_header header room)
    set(${room} records PARENT_SCOPE)
    if(DEFINED room_of_${header})
        set(${room} ${room_of_${header}} PARENT_SCOPE)
    endif()
endfunction()

# is_allowed(FILE HEADER OUT)
function(is_allowed file header out)
    room_of_file(${file} tree from)
    set(${out} FALSE PARENT_SCOPE)
    if(header STREQUAL "seamrevision/export.h" OR header MATCHES "^[^/]+\\.moc$")
        set(${out} TRUE PARENT_SCOPE) # made by the build
    elseif(header MATCHES "^seamrevision/([^/]+)$")
        room_of_public_header(${CMAKE_MATCH_1} to)
        if(NOT tree MATCHES "public|library" OR to STREQUAL from OR to IN_LIST arrows_${from})
            set(${out} TRUE PARENT_SCOPE)
        endif()
    elseif(header MATCHES "^([^/.]+)/[^/]+$")
        set(to ${CMAKE_MATCH_1})
        if(tree MATCHES "library|program" AND to IN_LIST ${tree}_rooms
           AND (to STREQUAL from OR to IN_LIST arrows_${from}))
            set(${out} TRUE PARENT_SCOPE)
        endif()
    endif()
endfunction()

set(violations "")
set(include_count 0)
file(GLOB_RECURSE files RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/include/*.h
    ${SOURCE_DIR}/src/*.h ${SOURCE_DIR}/src/*.cpp ${SOURCE_DIR}/src/*.inc
    ${SOURCE_DIR}/seamrevise/*.h ${SOURCE_DIR}/seamrevise/*.cpp
    ${SOURCE_DIR}/examples/*.h ${SOURCE_DIR}/examples/*.cpp)
foreach(file IN LISTS files)
    file(STRINGS ${SOURCE_DIR}/${file} lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "include[ \t]*([\"<])([^\">]+)[\">]")
            continue()
        endif()
        set(opening ${CMAKE_MATCH_1})
        set(header ${CMAKE_MATCH_2})
        # What stands in angle brackets is Qt's or the standard's, unless it is ours.
        string(REGEX REPLACE "/.*" "" folder ${header})
        if(opening STREQUAL "<"
           AND NOT folder IN_LIST library_rooms AND NOT folder IN_LIST program_rooms
           AND NOT folder MATCHES "^(seamrevision|seamrevise|src|include|tests|bench|fuzz)$")
            continue()
        endif()
        math(EXPR include_count "${include_count} + 1")
        is_allowed(${file} ${header} allowed)
        if(NOT allowed)
            list(APPEND violations "${file} includes ${header}")
        endif()
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

# Looks at the shared library as it ships: what it needs at run time, and what it exports.
# Needs LIBRARY, READELF, NM and SANITIZED, which is true where the compiler adds libraries.
cmake_minimum_required(VERSION 3.25)

set(allowed_libraries
    libQt5Core.so.5 libstdc++.so.6 libm.so.6 libgcc_s.so.1 libc.so.6 ld-linux)
if(SANITIZED)
    list(APPEND allowed_libraries libasan.so libubsan.so)
endif()
# What hosts rely on.
set(classes
    AreaInfoBase DES FuncRunningState LocalConfig MultiLayerConfig MultiLayerPartitionMerge NQRect
    PartitionMerge ScreenDataBaseManager)
list(JOIN classes "|" any_class)
set(public_name "((vtable|typeinfo|typeinfo name) for )?(${any_class})(::.*)?|generateErrInfo\\(.*")

execute_process(COMMAND ${READELF} -d ${LIBRARY} OUTPUT_VARIABLE dynamic
    COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*\\[[^\n]*\\]" needed "${dynamic}")
if(NOT needed MATCHES "libQt5Core")
    message(FATAL_ERROR "No dependency on Qt found in\n${dynamic}")
endif()
foreach(entry IN LISTS needed)
    string(REGEX REPLACE ".*\\[(.*)\\]" "\\1" library "${entry}")
    set(known FALSE)
    foreach(allowed IN LISTS allowed_libraries)
        string(FIND "${library}" "${allowed}" position)
        if(position EQUAL 0)
            set(known TRUE)
        endif()
    endforeach()
    if(NOT known)
        message(SEND_ERROR "The library must not need ${library}")
    endif()
endforeach()

# Weak symbols other than tables of types are instances of other people's templates.
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "," symbols "${symbols}")
string(REPLACE "[" "(" symbols "${symbols}")
string(REPLACE "]" ")" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
foreach(class IN LISTS classes)
    if(NOT symbols MATCHES " T ${class}::")
        message(SEND_ERROR "The library must export ${class}")
    endif()
endforeach()
foreach(line IN LISTS symbols)
    if(NOT line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.*)")
        continue()
    endif()
    set(type ${CMAKE_MATCH_1})
    set(name "${CMAKE_MATCH_2}")
    if(name MATCHES "^(${public_name})$" OR (SANITIZED AND name MATCHES "^__odr_asan"))
        continue()
    endif()
    if(NOT type MATCHES "[WVu]" OR name MATCHES "seamrevision|outData|anonymous namespace")
        message(SEND_ERROR "The library must not export ${name}")
    endif()
endforeach()

# Compiler settings of every target of this project.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
# An installed program finds the library beside it, wherever the tree was installed.
file(RELATIVE_PATH library_from_program
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH "$ORIGIN/${library_from_program}")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Type of build" FORCE)
endif()

add_library(seamrevision_settings INTERFACE)
# The bits of a blend are fixed: no multiply-add may skip a rounding.
target_compile_options(seamrevision_settings INTERFACE
    -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wnon-virtual-dtor -Wcast-align -Wnull-dereference)
if(SEAMREVISION_WARNINGS_AS_ERRORS)
    target_compile_options(seamrevision_settings INTERFACE -Werror)
endif()

# seamrevision_add_room(ROOM sources...): the object library of one folder of the library.
# What is public is what lies in include/; sources and unit tests also reach src/.
function(seamrevision_add_room room)
    set(name seamrevision_${room})
    add_library(${name} OBJECT ${ARGN})
    target_include_directories(${name} PUBLIC
        ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include)
    target_compile_definitions(${name} PRIVATE seamrevision_EXPORTS)
    target_link_libraries(${name} PUBLIC Qt5::Core PRIVATE seamrevision_settings)
endfunction()

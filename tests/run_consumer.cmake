# Installs into a prefix of its own, then builds and runs the example host against that, the way
# a user would. Needs BUILD_DIR, WORK_DIR, EXAMPLE_DIR, GENERATOR, BUILD_TYPE, CXX_COMPILER and
# CXX_FLAGS.

cmake_minimum_required(VERSION 3.25)
set(prefix ${WORK_DIR}/prefix)
set(build ${WORK_DIR}/build)
# Hosts that include the headers get none of these.
set(host_warnings "-Wall -Wextra -Wpedantic -Woverloaded-virtual -Werror")
# 2048 * (4 - p) / 4 + 2253 * p / 4 at position p of the strip, columns 2 to 5.
set(expected "2048 2048 2048 2099 2150 2201 2253 2253 \n")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result
        OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nended with ${result}:\n${output}${errors}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_output program)
    run(${program})
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} printed\n${output}instead of\n${expected}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
if(EXISTS ${prefix}/bin/seamrevise)
    run(${prefix}/bin/seamrevise --version)
endif()

run(${CMAKE_COMMAND} -S ${EXAMPLE_DIR} -B ${build} -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER}
    "-DCMAKE_CXX_FLAGS=${CXX_FLAGS} ${host_warnings}")
run(${CMAKE_COMMAND} --build ${build})
expect_output(${build}/minimalhost)

# The same by pkg-config, whose file must hold wherever the tree was installed.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
    file(GLOB_RECURSE package_file ${prefix}/*/seamrevision.pc)
    get_filename_component(package_dir ${package_file} DIRECTORY)
    run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${package_dir}
        ${PKG_CONFIG} --cflags --libs seamrevision)
    separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS} ${output}")
    get_filename_component(library_dir ${package_dir} DIRECTORY)
    run(${CXX_COMPILER} ${EXAMPLE_DIR}/minimalhost.cpp ${flags}
        -Wl,-rpath,${library_dir} -o ${WORK_DIR}/minimalhost)
    expect_output(${WORK_DIR}/minimalhost)
endif()

# The shipped library, its export header, install rules and package files.
include(CMakePackageConfigHelpers)
include(GenerateExportHeader)

add_library(seamrevision SHARED
    $<TARGET_OBJECTS:seamrevision_records>
    $<TARGET_OBJECTS:seamrevision_cipher>
    $<TARGET_OBJECTS:seamrevision_coeffiles>
    $<TARGET_OBJECTS:seamrevision_revision>
    $<TARGET_OBJECTS:seamrevision_singlelayer>
    $<TARGET_OBJECTS:seamrevision_multilayer>)
add_library(SeamRevision::seamrevision ALIAS seamrevision)
set_target_properties(seamrevision PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
target_compile_features(seamrevision PUBLIC cxx_std_17)
target_include_directories(seamrevision PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(seamrevision PUBLIC Qt5::Core)

generate_export_header(seamrevision
    EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/seamrevision/export.h)

install(TARGETS seamrevision EXPORT SeamRevisionTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${PROJECT_BINARY_DIR}/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/SeamRevision)
install(EXPORT SeamRevisionTargets NAMESPACE SeamRevision:: DESTINATION ${package_dir})
configure_package_config_file(cmake/SeamRevisionConfig.cmake.in
    ${PROJECT_BINARY_DIR}/SeamRevisionConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SeamRevisionConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/SeamRevisionConfig.cmake
    ${PROJECT_BINARY_DIR}/SeamRevisionConfigVersion.cmake
    DESTINATION ${package_dir})
# The tree may be moved: the package file finds it from where it lies itself.
file(RELATIVE_PATH pc_path_to_prefix
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_path_to_prefix "${pc_path_to_prefix}")
configure_file(cmake/seamrevision.pc.in ${PROJECT_BINARY_DIR}/seamrevision.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/seamrevision.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

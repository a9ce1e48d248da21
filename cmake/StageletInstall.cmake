# What lets another project say find_package(Stagelet) after `cmake --install`. The tree may be moved afterwards.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Stagelet)
install(EXPORT StageletTargets NAMESPACE Stagelet:: DESTINATION ${config_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/StageletConfig.cmake.in
    ${CMAKE_BINARY_DIR}/StageletConfig.cmake INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/StageletConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/StageletConfig.cmake ${CMAKE_BINARY_DIR}/StageletConfigVersion.cmake
    DESTINATION ${config_dir})

# Installs the loader with a CMake package: its targets, their headers and a version file.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qordex)
install(TARGETS qordex_platform qordex_log qordex_config EXPORT qordex
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qordex
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qordex)
install(EXPORT qordex FILE qordexConfig.cmake NAMESPACE qordex:: DESTINATION ${package_dir})
write_basic_package_version_file(qordexConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qordexConfigVersion.cmake DESTINATION ${package_dir})

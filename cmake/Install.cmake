include(CMakePackageConfigHelpers)

install(TARGETS RK RefHost EXPORT RKTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT RKTargets NAMESPACE RK:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RK)

# Public headers only: what begins with RKp_ stays at home.
install(DIRECTORY pkg/RK/host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/RK FILES_MATCHING PATTERN "*.h")
install(DIRECTORY pkg/RK/indep DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/RK
        FILES_MATCHING PATTERN "*.h" PATTERN "RKp_*" EXCLUDE)
install(FILES refhost/RefHost.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/RK/refhost)

configure_package_config_file(cmake/RKConfig.cmake.in ${PROJECT_BINARY_DIR}/RKConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RK)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RKConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RKConfig.cmake ${PROJECT_BINARY_DIR}/RKConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/RK)
# Told from where the file lies, so that the installed tree can be moved.
file(RELATIVE_PATH RK_PREFIX_FROM_PC /x/${CMAKE_INSTALL_LIBDIR}/pkgconfig /x)
configure_file(cmake/rk.pc.in ${PROJECT_BINARY_DIR}/rk.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/rk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

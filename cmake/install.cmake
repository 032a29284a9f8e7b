# What cmake --install puts under any prefix.
include(CMakePackageConfigHelpers)

install(TARGETS pvr-service-api EXPORT pvr-service-api LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/pvr_service_api.h include/pvr_records.h include/pvr_events.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES interface/org.vexan.tv.pvr.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d)

configure_file(cmake/pvr-service-api.pc.in pvr-service-api.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/pvr-service-api.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pvr-service-api)
install(EXPORT pvr-service-api NAMESPACE pvr:: FILE pvr-service-api-config.cmake DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/pvr-service-api-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/pvr-service-api-config-version.cmake DESTINATION ${package_dir})

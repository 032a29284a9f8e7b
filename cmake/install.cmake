# What cmake --install puts under any prefix. Its components: library, development, policy, tools, simulator.
include(CMakePackageConfigHelpers)

if(PVR_PLATFORM STREQUAL "host")
    # A linker and a loader that found the library find the stand-ins, which are nobody else's, in a folder beside it.
    set_target_properties(pvr-service-api-installed PROPERTIES INSTALL_RPATH "$ORIGIN/pvr-service-api")
endif()
install(TARGETS pvr-service-api-installed EXPORT pvr-service-api
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
# Whoever brings the service brings the policy: a system needs it once, whatever links with the library.
install(FILES interface/org.vexan.tv.pvr.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT policy)

# The pkg-config file finds its prefix from where it lies, at whatever depth a distribution keeps its
# libraries. Only a directory that was given as an absolute path stays one.
foreach(dir LIBDIR INCLUDEDIR)
    set(pc_${dir} ${CMAKE_INSTALL_${dir}})
    if(NOT IS_ABSOLUTE ${pc_${dir}})
        string(PREPEND pc_${dir} "\${prefix}/")
    endif()
endforeach()
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${pc_dir})
    set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH pc_prefix /prefix/${pc_dir} /prefix)
    string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${pc_prefix}")
endif()
configure_file(cmake/pvr-service-api.pc.in pvr-service-api.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/pvr-service-api.pc DESTINATION ${pc_dir} COMPONENT development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pvr-service-api)
install(EXPORT pvr-service-api NAMESPACE pvr:: FILE pvr-service-api-config.cmake DESTINATION ${package_dir}
    COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/pvr-service-api-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/pvr-service-api-config-version.cmake DESTINATION ${package_dir}
    COMPONENT development)

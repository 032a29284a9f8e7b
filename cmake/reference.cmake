# The reference of the public headers, in reference/ of the build folder. Not part of what is built by default.
find_program(PVR_DOXYGEN doxygen)
set(PVR_DOXYFILE ${PROJECT_BINARY_DIR}/Doxyfile)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PVR_DOXYFILE} @ONLY)
if(PVR_DOXYGEN)
    add_custom_target(reference COMMAND ${PVR_DOXYGEN} ${PVR_DOXYFILE} VERBATIM
        COMMENT "Writing ${PROJECT_BINARY_DIR}/reference/index.html")
endif()

# How everything in the tree is compiled. Warnings are errors, generated code apart.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Sections let the linker drop the generated calls that nothing uses.
add_compile_options(-ffunction-sections -fdata-sections)
add_compile_definitions(_GNU_SOURCE)
# Recordings outgrow 2 GiB; machines of 64 bits need no word for it.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64)
endif()

add_library(pvr-warnings INTERFACE)
target_compile_options(pvr-warnings INTERFACE -Wall -Wextra -Wconversion -Wsign-conversion -Wformat=2 -Werror)

if(PVR_SANITIZE)
    add_compile_options(-fsanitize=${PVR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${PVR_SANITIZE})
endif()
# Clang's own: it counts the conditions that the source has, while gcov also counts the ways of exceptions.
if(PVR_COVERAGE)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "PVR_COVERAGE takes clang, as the preset coverage sets it")
    endif()
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
    add_link_options(-fprofile-instr-generate)
endif()

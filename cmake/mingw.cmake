# For programs that run on 64-bit Windows, made on Debian by mingw-w64. Libraries come from the folder that
# scripts/windows_dependencies.sh prints; VANTREL_WINDOWS_LIBRARIES tells it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(target x86_64-w64-mingw32)
# Threads of the C++ library are those of POSIX, which it brings along.
set(CMAKE_C_COMPILER ${target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${target}-g++-posix)
set(CMAKE_RC_COMPILER ${target}-windres)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTREL_WINDOWS_LIBRARIES)
if(NOT VANTREL_WINDOWS_LIBRARIES)
    message(FATAL_ERROR "VANTREL_WINDOWS_LIBRARIES is the folder that scripts/windows_dependencies.sh prints")
endif()
set(CMAKE_FIND_ROOT_PATH ${VANTREL_WINDOWS_LIBRARIES} /usr/${target})
set(CMAKE_PREFIX_PATH ${VANTREL_WINDOWS_LIBRARIES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH) # Eigen and nlohmann-json are headers alone: Debian's own
set(ZLIB_USE_STATIC_LIBS ON)
# Nothing is to be carried along with a program.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# Tests run under Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine.sh)

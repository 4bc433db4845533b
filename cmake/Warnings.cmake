# One interface target carries what every target of ours is compiled with.
add_library(vantrel_flags INTERFACE)
target_compile_options(vantrel_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${VANTREL_WERROR}>:-Werror>)
# GCC 12 takes the source and the target of std::string::insert, as inlined from `"text" + std::string`, for one
# object and warns of copies of 2^63 bytes that overlap or go beyond it. The library's code is right, and so is
# GCC 13.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
   AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(vantrel_flags INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-array-bounds)
endif()
# Private classes may have members of their file's own types; where several files are compiled as one unit, the
# compiler can't see that.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(vantrel_flags INTERFACE -Wno-subobject-linkage)
endif()
target_include_directories(vantrel_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(WIN32)
    target_compile_definitions(vantrel_flags INTERFACE
        _WIN32_WINNT=0x0A00 UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _POSIX_C_SOURCE=200809L)
    # Files have the same line ends on all systems.
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=binmode.o OUTPUT_VARIABLE binmode
                    OUTPUT_STRIP_TRAILING_WHITESPACE)
    target_link_options(vantrel_flags INTERFACE ${binmode})
endif()
if(VANTREL_SANITIZE)
    target_compile_options(vantrel_flags INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vantrel_flags INTERFACE -fsanitize=address,undefined)
    target_compile_definitions(vantrel_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(VANTREL_FUZZ)
    target_compile_options(vantrel_flags INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vantrel_flags INTERFACE -fsanitize=address,undefined)
    target_compile_definitions(vantrel_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()

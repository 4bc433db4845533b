# vantrel_sources(VARIABLE): the sources in this folder, those for another system left out.
function(vantrel_sources variable)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    if(WIN32)
        list(FILTER sources EXCLUDE REGEX "_posix(_test)?\\.cpp$")
    else()
        list(FILTER sources EXCLUDE REGEX "_win32(_test)?\\.cpp$")
    endif()
    # The system's headers have too many names to share a unit with other files.
    foreach(source ${sources})
        if(source MATCHES "_win32(_test)?\\.cpp$")
            set_source_files_properties(${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        endif()
    endforeach()
    set(${variable} ${sources} PARENT_SCOPE)
endfunction()

# vantrel_library(NAME [libraries...]): the static library of the sources in this folder.
function(vantrel_library name)
    vantrel_sources(sources)
    if(NOT sources)
        add_library(${name} INTERFACE)
        return()
    endif()
    # Files that include Windows' headers, which are slow to read, are a unit of their own.
    set(system ${sources})
    list(FILTER system INCLUDE REGEX "_win32\\.cpp$")
    if(system)
        list(REMOVE_ITEM sources ${system})
        add_library(${name}_system OBJECT ${system})
        set_source_files_properties(${system} PROPERTIES SKIP_UNITY_BUILD_INCLUSION OFF)
        target_link_libraries(${name}_system PRIVATE vantrel_flags ${ARGN})
        list(APPEND sources $<TARGET_OBJECTS:${name}_system>)
    endif()
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC vantrel_flags ${ARGN})
endfunction()

# vantrel_number_library(NAME [libraries...]): one that goes through pixels and stars by the million. There the
# compiler takes the time to unroll and vectorise; elsewhere that would only make it slower.
function(vantrel_number_library name)
    vantrel_library(${name} ${ARGN})
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O3>)
endfunction()

# vantrel_test_code(NAME): compiles NAME as tests are compiled. Nothing is optimised: most of a test's time goes into
# the compiler, and what it calls is optimised in its own library.
function(vantrel_test_code name)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_options(${name} PRIVATE -O0)
endfunction()

# vantrel_test(NAME [libraries...]): the test program of the *_test.cpp files in this folder; every case is a
# test of its own to ctest. Those of one system are left out on others.
function(vantrel_test name)
    vantrel_sources(sources)
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE vantrel_flags ${ARGN} GTest::gmock GTest::gtest GTest::gtest_main)
    vantrel_test_code(${name})
    target_precompile_headers(${name} REUSE_FROM vantrel_test_headers)
    if(WIN32)
        # Starting a program is what takes time under Wine: all cases are one test, with time for all of them.
        add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
        set_tests_properties(${name} PROPERTIES TIMEOUT 900)
    else()
        gtest_discover_tests(${name} PROPERTIES TIMEOUT 300 DISCOVERY_TIMEOUT 60)
    endif()
endfunction()

# vantrel_windows_resources(PROGRAM DESCRIPTION): gives the program icon, version and manifest; nothing on other systems.
function(vantrel_windows_resources program description)
    if(NOT WIN32)
        return()
    endif()
    set(resources ${CMAKE_CURRENT_BINARY_DIR}/${program}.rc)
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/program.rc.in ${resources} @ONLY)
    set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS
        "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/program.manifest;${PROJECT_SOURCE_DIR}/packaging/vantrel.ico")
    target_sources(${program} PRIVATE ${resources})
endfunction()

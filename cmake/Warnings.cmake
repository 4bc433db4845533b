# One interface target carries what every target of ours is compiled with.
add_library(vantrel_flags INTERFACE)
target_compile_options(vantrel_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${VANTREL_WERROR}>:-Werror>)
target_include_directories(vantrel_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
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

# Static libraries, from scripts/windows_dependencies.sh, and the system's own that they stand on.
vantrel_find_c_library(cfitsio cfitsio fitsio.h)
target_link_libraries(cfitsio INTERFACE ZLIB::ZLIB)
vantrel_find_c_library(curl curl curl/curl.h)
target_compile_definitions(curl INTERFACE CURL_STATICLIB)
target_link_libraries(curl INTERFACE ZLIB::ZLIB ws2_32 crypt32 bcrypt)
add_library(CURL::libcurl ALIAS curl)
vantrel_find_c_library(microhttpd microhttpd microhttpd.h)
target_link_libraries(microhttpd INTERFACE ws2_32)
vantrel_find_c_library(qrencode qrencode qrencode.h)
target_link_libraries(TIFF::TIFF INTERFACE ZLIB::ZLIB)

# Headers alone, and so Debian's own; the folder that they are in has those of another system as well.
find_path(VANTREL_JSON_INCLUDE nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include)
file(CREATE_LINK ${VANTREL_JSON_INCLUDE}/nlohmann ${PROJECT_BINARY_DIR}/include/nlohmann SYMBOLIC)
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED GLOBAL)
target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/include)

# The programs without windows do without the toolkit; scripts/windows_qt.sh prints the folder that it is in.
if(VANTREL_WINDOWS_QT)
    set(QT_HOST_PATH /usr)
    list(PREPEND CMAKE_PREFIX_PATH ${VANTREL_WINDOWS_QT})
    list(PREPEND CMAKE_FIND_ROOT_PATH ${VANTREL_WINDOWS_QT})
    find_package(Qt6 REQUIRED COMPONENTS Widgets Test)
endif()

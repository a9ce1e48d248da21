# Compiler settings and the two helpers that every layer's CMakeLists.txt uses.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib;$ORIGIN")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

set(STAGELET_SANITIZE "" CACHE STRING
    "Sanitizers: empty, 'address' (with undefined behaviour), 'thread', or 'fuzzer' (Clang: address and coverage)")

add_library(stagelet_options INTERFACE)
target_compile_options(stagelet_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
    -Wcast-align -Wformat=2 -Wimplicit-fallthrough
    -fstack-protector-strong)
# GCC 12 sees overlaps in std::string's concatenation that are not there (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(stagelet_options INTERFACE -Wno-restrict)
endif()
# With sanitizers it sees members of std::function and of regular expressions as uninitialised that are not.
if(STAGELET_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(stagelet_options INTERFACE -Wno-maybe-uninitialized)
endif()
# A unique global symbol would keep an unloaded package in memory; Clang never makes them.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(stagelet_options INTERFACE -fno-gnu-unique)
endif()
target_compile_definitions(stagelet_options INTERFACE _GLIBCXX_ASSERTIONS)
target_link_options(stagelet_options INTERFACE -Wl,-z,relro,-z,now)
# Sanitizers leave symbols open that only the program brings.
if(NOT STAGELET_SANITIZE)
    target_link_options(stagelet_options INTERFACE -Wl,-z,defs)
endif()

if(STAGELET_SANITIZE STREQUAL "address")
    target_compile_options(stagelet_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(STAGELET_SANITIZE STREQUAL "thread")
    target_compile_options(stagelet_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
elseif(STAGELET_SANITIZE STREQUAL "fuzzer")
    target_compile_options(stagelet_options INTERFACE -fsanitize=fuzzer-no-link,address,undefined
        -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(stagelet_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

find_package(Threads REQUIRED)

# stagelet_objects(NAME [DEPENDS lib...] [SOURCES file...])
# The object files of one folder, so that tests can link classes which the library itself does not export.
function(stagelet_objects NAME)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${NAME} OBJECT ${ARG_SOURCES})
    target_link_libraries(${NAME} PRIVATE stagelet_options PUBLIC ${ARG_DEPENDS} Threads::Threads)
endfunction()

# stagelet_library(NAME ROOT dir [OBJECTS lib...] [SOURCES file...] [PUBLIC lib...] [PRIVATE lib...])
# One shared library of a layer; ROOT is the layer's include root. Other packages know it as Stagelet::NAME.
function(stagelet_library NAME)
    cmake_parse_arguments(ARG "" "ROOT" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${NAME} SHARED ${ARG_SOURCES})
    target_include_directories(${NAME} PUBLIC
        "$<BUILD_INTERFACE:${ARG_ROOT}>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/stagelet>")
    target_link_libraries(${NAME} PUBLIC ${ARG_PUBLIC} Threads::Threads
        PRIVATE $<BUILD_INTERFACE:stagelet_options> ${ARG_PRIVATE})
    add_library(Stagelet::${NAME} ALIAS ${NAME})
    target_compile_features(${NAME} PUBLIC cxx_std_20)
    install(TARGETS ${NAME} EXPORT StageletTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

# stagelet_install_headers(FOLDER [FILES name...])
# The public headers of a folder below the current one: all of them (not those of folders in it), or those named.
function(stagelet_install_headers FOLDER)
    cmake_parse_arguments(ARG "" "" "FILES" ${ARGN})
    if(ARG_FILES)
        list(TRANSFORM ARG_FILES PREPEND ${FOLDER}/)
    else()
        file(GLOB ARG_FILES CONFIGURE_DEPENDS ${FOLDER}/*.h)
    endif()
    install(FILES ${ARG_FILES} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/stagelet/${FOLDER})
endfunction()

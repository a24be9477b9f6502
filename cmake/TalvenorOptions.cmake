# Settings that hold for every target: language level, warnings, sanitizers, precompiled headers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
# One target that makes all generated headers, for the static analysis.
set(CMAKE_GLOBAL_AUTOGEN_TARGET ON)
set(CMAKE_GLOBAL_AUTOGEN_TARGET_NAME autogen_all)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

set(TALVENOR_SANITIZER "" CACHE STRING "Value for -fsanitize, for instance address,undefined or thread")
set(TALVENOR_SERVICE_HOST "service.talvenor.invalid" CACHE STRING
    "Public host of the hosted service; a reserved name until the operator has one")
option(TALVENOR_PRECOMPILED_HEADERS "Precompile the Qt headers (off for clang-tidy)" ON)

find_program(TALVENOR_CCACHE ccache)
if(TALVENOR_CCACHE)
    # Precompiled headers and ccache get along only with these two liberties.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime;CCACHE_BASEDIR=${CMAKE_SOURCE_DIR};CCACHE_NOHASHDIR=1;${TALVENOR_CCACHE}")
endif()

add_library(talvenor_options INTERFACE)
target_compile_options(talvenor_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
    -Wnull-dereference -Wimplicit-fallthrough -Wundef -Werror)
# GCC 12 sees dangling and null pointers in code that it has inlined from Qt and Boost headers.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(talvenor_options INTERFACE -Wno-null-dereference -Wno-dangling-pointer -fpch-preprocess)
endif()
target_compile_definitions(talvenor_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)

if(TALVENOR_SANITIZER)
    add_compile_options(-fsanitize=${TALVENOR_SANITIZER} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TALVENOR_SANITIZER})
endif()

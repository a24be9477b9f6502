# The ways in which this project makes targets.

# talvenor_add_library(NAME FOLDER <prefix> SOURCES ... LINKS ...)
#
# A static library for one folder. Its headers are reached as "<prefix>/Header.h" through a folder of
# links in the build tree that holds this one prefix alone, so that a library sees the headers of what
# it links and of nothing else.
function(talvenor_add_library name)
    cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    set(include_root "${CMAKE_BINARY_DIR}/include/${name}")
    get_filename_component(parent "${include_root}/${ARG_FOLDER}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${include_root}/${ARG_FOLDER}" SYMBOLIC)
    target_include_directories(${name} PUBLIC "${include_root}")
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE talvenor_options ${ARG_PRIVATE_LINKS})
    talvenor_precompile_headers(${name})
endfunction()

# Precompiles the Qt and standard headers that nearly every file takes in.
function(talvenor_precompile_headers name)
    if(TALVENOR_PRECOMPILED_HEADERS)
        target_precompile_headers(${name} PRIVATE
            <algorithm> <functional> <memory> <mutex> <optional> <string> <vector>
            <QByteArray> <QDateTime> <QList> <QObject> <QPointer> <QString> <QUuid> <QDebug>)
    endif()
endfunction()

# talvenor_add_test(NAME SOURCES ... LINKS ... [DESKTOP options...] [TIMEOUT seconds] [SERIAL])
#
# A Qt Test program. With DESKTOP it runs inside tests/support/virtual-desktop with the options given
# (such as --audio pulseaudio --secrets --display); without, it runs in a bare temporary home. SERIAL
# keeps other tests from running beside it, for those that measure real time.
function(talvenor_add_test name)
    cmake_parse_arguments(ARG "SERIAL" "TIMEOUT" "SOURCES;LINKS;DESKTOP" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    target_link_libraries(${name} PRIVATE talvenor_options talvenor_test_support Qt6::Test ${ARG_LINKS})
    talvenor_precompile_headers(${name})
    talvenor_register_test(${name} ${name} TIMEOUT "${ARG_TIMEOUT}" DESKTOP ${ARG_DESKTOP})
    if(ARG_SERIAL)
        set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
    endif()
endfunction()

# talvenor_set_sanitizer_options(TEST_NAME)
#
# How the sanitizers judge a test, where the build has one: with our lists of what is other makers' business.
function(talvenor_set_sanitizer_options test_name)
    if(NOT TALVENOR_SANITIZER)
        return()
    endif()
    set(lists "${CMAKE_SOURCE_DIR}/tests/support/sanitizers")
    # QProcess makes its children with vfork, in which the thread sanitizer marks the parent's memory as that of a
    # forked child; it would then refuse to start threads.
    string(JOIN " " thread_options "suppressions=${lists}/tsan.supp" second_deadlock_stack=1
        ignore_noninstrumented_modules=1 die_after_fork=0)
    set_tests_properties(${test_name} PROPERTIES ENVIRONMENT
        "LSAN_OPTIONS=suppressions=${lists}/lsan.supp;TSAN_OPTIONS=${thread_options};UBSAN_OPTIONS=print_stacktrace=1")
endfunction()

# talvenor_register_test(TEST_NAME TARGET [DESKTOP options...] [TIMEOUT seconds] [ARGUMENTS ...])
#
# Registers one more run of a test program, for instance on another audio server.
function(talvenor_register_test test_name target)
    cmake_parse_arguments(ARG "" "TIMEOUT" "DESKTOP;ARGUMENTS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    add_test(NAME ${test_name}
        COMMAND "${CMAKE_SOURCE_DIR}/tests/support/virtual-desktop" ${ARG_DESKTOP} --
                $<TARGET_FILE:${target}> ${ARG_ARGUMENTS})
    set_tests_properties(${test_name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
    talvenor_set_sanitizer_options(${test_name})
endfunction()

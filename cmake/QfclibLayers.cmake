# One OBJECT library per floor of the house. The shared library and the unit tests link the objects, so unit tests
# see internals while hosts see only what is exported.

add_library(qfclib_options INTERFACE)
target_compile_features(qfclib_options INTERFACE cxx_std_20)
target_include_directories(qfclib_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(qfclib_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2
    $<$<BOOL:${QFCLIB_WARNINGS_AS_ERRORS}>:-Werror>
    # GCC 12 reports false positives of these from inside its own std::string at -O2.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-stringop-overflow>)
if(QFCLIB_SANITIZE)
    target_compile_options(qfclib_options INTERFACE -fsanitize=${QFCLIB_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(qfclib_options INTERFACE -fsanitize=${QFCLIB_SANITIZE})
endif()
if(QFCLIB_COVERAGE)
    target_compile_options(qfclib_options INTERFACE --coverage)
    target_link_options(qfclib_options INTERFACE --coverage)
endif()

# qfclib_layer(<floor> SOURCES ... [HEADERS <installed headers> ...] [LINK <libraries> ...])
# Sources and headers are relative to the room, or absolute.
function(qfclib_layer floor)
    cmake_parse_arguments(ARG "" "" "SOURCES;HEADERS;LINK" ${ARGN})
    set(target qfclib_${floor})
    add_library(${target} OBJECT ${ARG_SOURCES})
    target_link_libraries(${target} PUBLIC qfclib_options ${ARG_LINK})
    target_compile_definitions(${target} PRIVATE QFCLIB_BUILDING)
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON CXX_EXTENSIONS OFF)
    set_property(GLOBAL APPEND PROPERTY QFCLIB_LAYERS ${target})
    foreach(header IN LISTS ARG_HEADERS)
        get_filename_component(header ${header} ABSOLUTE)
        file(RELATIVE_PATH relative ${PROJECT_SOURCE_DIR} ${header})
        set_property(GLOBAL APPEND PROPERTY QFCLIB_PUBLIC_HEADERS ${relative})
    endforeach()
endfunction()

# qfclib_test(<name> FLOORS <floor> ... SOURCES ... [LINK ...])
# Every test case is a CTest test of its own and so a process of its own: the data folder is fixed once per process.
function(qfclib_test name)
    cmake_parse_arguments(ARG "" "" "FLOORS;SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    foreach(floor IN LISTS ARG_FLOORS)
        target_link_libraries(${name} PRIVATE qfclib_${floor})
    endforeach()
    target_link_libraries(${name} PRIVATE qfclib_options GTest::gmock GTest::gtest_main ${ARG_LINK})
    set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
    gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

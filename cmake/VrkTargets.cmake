# Flags that hold for every target of the tree. GCC 12 reports -Wrestrict falsely where texts are added.
function(vrk_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
        -Woverloaded-virtual -Wno-restrict -Werror)
    if(VRK_SANITIZE)
        # Checks at each access are a sixth of the build: a null pointer that is used ends the test without them,
        # and the processor takes any alignment.
        target_compile_options(${target} PUBLIC -fsanitize=address,undefined -fno-sanitize=null,alignment
            -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PUBLIC -fsanitize=address,undefined)
    endif()
endfunction()

# vrk_library(NAME SOURCES a.cpp ... LINKS lower floors ...): the library of one folder, static but for BUILD_SHARED_LIBS.
function(vrk_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    add_library(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    vrk_target_defaults(${name})
endfunction()

# vrk_program(NAME SOURCES main.cpp LINKS ...): an executable.
function(vrk_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS})
    vrk_target_defaults(${name})
endfunction()

# vrk_test(NAME SOURCES ... LINKS ...): a GoogleTest program, one CTest entry a test case.
function(vrk_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    vrk_program(${name} SOURCES ${ARG_SOURCES} LINKS ${ARG_LINKS} GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST)
endfunction()

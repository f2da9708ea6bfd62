# Tests of a program with many cases.
include(GoogleTest)

# As gtest_discover_tests, which has each case as a test of its own. Where a program starts in an emulator, which takes
# longer than most cases, the cases share a few runs.
function(korvel_discover_tests target)
    if(NOT CMAKE_CROSSCOMPILING)
        gtest_discover_tests(${target} ${ARGN})
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 cases "NO_PRETTY_VALUES" "TEST_PREFIX" "PROPERTIES")
    set(shards 4)
    foreach(shard RANGE 1 ${shards})
        math(EXPR index "${shard} - 1")
        set(name ${cases_TEST_PREFIX}${target}.${shard})
        add_test(NAME ${name} COMMAND ${target})
        set_tests_properties(${name} PROPERTIES
            TIMEOUT 1500
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
    endforeach()
endfunction()

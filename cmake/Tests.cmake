# kestra_tests(TARGET ARGUMENTS...): the tests of a GoogleTest program. On Linux each is a test of
# ctest's, with the arguments of gtest_discover_tests. Under Wine a start costs as much as many
# tests, so the whole program is one.
function(kestra_tests target)
  if(CMAKE_CROSSCOMPILING)
    cmake_parse_arguments(PARSE_ARGV 1 tests "" "TEST_FILTER" "")
    set(name ${target})
    set(filter)  # an empty one would choose no test
    if(tests_TEST_FILTER)
      string(MAKE_C_IDENTIFIER "${target}${tests_TEST_FILTER}" name)
      set(filter --gtest_filter=${tests_TEST_FILTER})
    endif()
    add_test(NAME ${name} COMMAND ${target} --gtest_brief=1 ${filter})
    # A program that runs nothing ends well.
    set_tests_properties(${name} PROPERTIES
      FAIL_REGULAR_EXPRESSION "] 0 tests from 0 test suites ran")
  else()
    gtest_discover_tests(${target} ${ARGN})
  endif()
endfunction()

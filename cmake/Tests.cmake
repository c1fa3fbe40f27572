# kestra_tests(TARGET ARGUMENTS...): the tests of a GoogleTest program. On Linux each is a test of
# ctest's, with the arguments of gtest_discover_tests. Under Wine a start costs as much as many
# tests, so the whole program is one.
function(kestra_tests target)
  if(CMAKE_CROSSCOMPILING)
    cmake_parse_arguments(PARSE_ARGV 1 tests "" "TEST_FILTER" "")
    set(name ${target})
    if(tests_TEST_FILTER)
      string(MAKE_C_IDENTIFIER "${target}${tests_TEST_FILTER}" name)
    endif()
    add_test(NAME ${name} COMMAND ${target} --gtest_brief=1 --gtest_filter=${tests_TEST_FILTER})
  else()
    gtest_discover_tests(${target} ${ARGN})
  endif()
endfunction()

# The query scripts run through the command, as a user runs it. Those that need the test modules run
# through the same command over an engine that has them.
add_executable(kestra_with_test_modules support/TestSetup.cpp)
# Libraries that CALLDLL loads find their string functions in the executable.
set_target_properties(kestra_with_test_modules PROPERTIES ENABLE_EXPORTS ON)
target_link_libraries(kestra_with_test_modules PRIVATE
  kestra_command_objects kestra_render kestra_front kestra_query_test_support)

set(script_runner ${CMAKE_CURRENT_SOURCE_DIR}/run_scripts.py)
set(scripts
  active.test
  aggregates.test
  ambiguity.test
  any.test
  calldll.test
  comparison.test
  convert.test
  dates.test
  joins.test
  logic.test
  null.test
  numbers.test
  procedures.test
  processes.test
  select.test
  sources.test
  strings.test
  subselects.test
  syntax.test
  versions.test
)
list(TRANSFORM scripts PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
if(CMAKE_CROSSCOMPILING)
  # Starting takes longer than most cases, so there are two tests and not one for each script. The
  # library of CALLDLL is found on the PATH that Wine makes of WINEPATH.
  set(run_scripts python3 ${script_runner} --system windows --words $<TARGET_FILE_NAME:words>)
  add_test(NAME query_scripts
    COMMAND ${run_scripts} ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:kestra_with_test_modules>
            -- ${scripts})
  set_tests_properties(query_scripts PROPERTIES
    ENVIRONMENT "WINEPATH=Z:$<TARGET_FILE_DIR:words>" TIMEOUT 600)
  add_test(NAME query_scripts_of_the_command
    COMMAND ${run_scripts} --skip-test-modules ${CMAKE_CROSSCOMPILING_EMULATOR}
            $<TARGET_FILE:kestra_command> -- ${scripts})
  set_tests_properties(query_scripts_of_the_command PROPERTIES TIMEOUT 600)
  return()
endif()

foreach(script ${scripts})
  get_filename_component(name ${script} NAME_WE)
  add_test(NAME query_script_${name}
    COMMAND python3 ${script_runner} $<TARGET_FILE:kestra_with_test_modules> -- ${script})
  set_tests_properties(query_script_${name} PROPERTIES
    ENVIRONMENT LD_LIBRARY_PATH=${CMAKE_BINARY_DIR}/examples/calldll)
endforeach()
add_test(NAME query_scripts_of_the_command
  COMMAND python3 ${script_runner} --skip-test-modules $<TARGET_FILE:kestra_command> -- ${scripts})

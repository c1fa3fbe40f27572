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

# Where the library of CALLDLL is found; Wine makes the PATH of Windows out of WINEPATH.
if(CMAKE_CROSSCOMPILING)
  set(system windows)
  set(words_path WINEPATH=Z:$<TARGET_FILE_DIR:words>)
else()
  set(system linux)
  set(words_path LD_LIBRARY_PATH=$<TARGET_FILE_DIR:words>)
endif()

function(add_script_test name script command)
  add_test(NAME ${name}
    COMMAND python3 ${script_runner} --system ${system} --words $<TARGET_FILE_NAME:words>
            ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${command}> -- ${script})
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${words_path}")
endfunction()

foreach(script ${scripts})
  get_filename_component(name ${script} NAME_WE)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/${script})
  add_script_test(query_script_${name} ${script} kestra_with_test_modules)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
  file(STRINGS ${script} mark REGEX "^@test-modules$")
  if(NOT mark)
    add_script_test(query_script_of_the_command_${name} ${script} kestra_command)
  endif()
endforeach()

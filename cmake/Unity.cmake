# Compiles the files of one folder that belong to one target as one: three quarters of the time that
# a sanitizer's build takes goes into templates and inline functions that every file makes for
# itself. So the files of one folder may not use one name for two things of their own.
# The other presets compile each file by itself, and so look that each includes what it needs.

function(unite_target target)
  get_target_property(type ${target} TYPE)
  get_target_property(sources ${target} SOURCES)
  if(type MATCHES "UTILITY|INTERFACE_LIBRARY" OR NOT sources)
    return()
  endif()
  get_target_property(folder ${target} SOURCE_DIR)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder} NORMALIZE OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH parent)
    string(MD5 group "${parent}")
    set_property(SOURCE ${path} DIRECTORY ${folder} PROPERTY UNITY_GROUP ${group})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

function(unite_folder folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    unite_target(${target})
  endforeach()
  get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS subfolders)
    unite_folder(${subfolder})
  endforeach()
endfunction()
